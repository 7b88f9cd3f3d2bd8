#pragma once

#include <functional>
#include <memory>

#include "Outcome.h"

class QTimer;
class SessionContext;

// The 0.1 s supervision timer of a clip transfer. Tests replace it to tick by hand.
class SupervisionTimer {
 public:
  virtual ~SupervisionTimer() = default;
  // Starts ticking every 0.1 s on the main thread, replacing an earlier start.
  virtual void start(std::function<void()> tick) = 0;
  virtual void invalidate() = 0;
};

// A QTimer on the thread that creates it.
std::unique_ptr<SupervisionTimer> MakeQtSupervisionTimer();

// Watches a clip as it streams in: shows the progress, ends the clip when every byte is
// there, declares a stall after 50 ticks without bytes, and tunes the device's pacing with
// "#cdcwait": one level down after a clean clip, one up (and the clip fetched again, at
// most twice) after a stall. The level is kept for the whole run.
class LinkSupervision {
 public:
  LinkSupervision(SessionContext &context, std::unique_ptr<SupervisionTimer> timer);
  ~LinkSupervision();

  void startWatching();
  void watchTick();

 private:
  // Ends the clip as failed, its file closed and the controls back.
  void giveUp(Failure failure, const char *key);

  SessionContext &context_;
  std::unique_ptr<SupervisionTimer> timer_;
};
