#pragma once

#include <QObject>
#include <functional>
#include <mutex>

#include "DeviceState.h"
#include "MainThreadQueue.h"

// The device session's published state. Any thread may change it; each change, and each
// box the session asks to show, reaches the listeners on the main thread in order: at once
// when made there, else through the main thread's event loop. Made on the main thread.
class DeviceModel : public QObject {
  Q_OBJECT

 public:
  DeviceState state() const;
  // Changes the state; listeners hear of it unless nothing changed.
  void update(const std::function<void(DeviceState &)> &change);
  // Something the diver must read in a box (a terminal prints it as a line).
  void tell(const QString &text);

 signals:
  void changed(const DeviceState &state);
  void notice(const QString &text);

 private:
  void signalChange();

  mutable std::mutex mutex_;
  DeviceState state_;
  DeviceState signalled_;  // main thread
  MainThreadQueue mainThread_;
};
