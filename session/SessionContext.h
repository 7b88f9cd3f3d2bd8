#pragma once

#include <QList>
#include <QObject>
#include <QStringList>
#include <deque>
#include <functional>
#include <mutex>

#include "DeviceModel.h"
#include "PendingOperation.h"
#include "SerialChannel.h"
#include "SessionState.h"
#include "Transitions.h"

// Milliseconds since some fixed point, never going back.
int64_t SteadyClockMs();

// Where the voice and log parts plug into the session. Set before the port opens.
struct SessionHooks {
  // Reads of the receive thread by selector, bytes followed by a terminating zero.
  std::function<void(char *bytes, size_t length)> voiceIndex, voiceData, logHistory, logData;
  // The device's answer to "#cdcwait" (receive thread).
  std::function<void(const char *text)> cdcwaitReply;
  // Main thread: request the clip again; close the clip file.
  std::function<void()> downloadClip, closeClipFile;
};

// What every component of the session shares: the state, the one serial channel, the
// published state, the hooks, and the few steps that every flow takes.
class SessionContext {
 public:
  SessionContext();

  SessionState state;
  SerialChannel channel;
  // What the front ends show: the phase, the identity, the lists (main thread writes
  // them), the clip's progress; and the boxes the session asks for.
  DeviceModel model;
  SessionHooks hooks;
  // Where the storage folders go: the user's Downloads folder unless a front end says.
  std::function<QString()> downloadsFolder = [] { return DownloadsFolder(); };
  // The operation under way and whoever waits for its outcome.
  PendingOperation operation;
  // Milliseconds on a steady clock, for the reply deadline; tests move it by hand.
  std::function<int64_t()> clockMs = SteadyClockMs;
  Transitions transitions{*this};

  // Runs start once the line is quiet (the tail of an earlier reply drained, the reply to
  // a closing "#detail" in), on the main thread; at the latest after the reply deadline.
  // Never once the port has gone (Transitions::portGoneBeforeRequest says what then).
  void whenLineQuiet(std::function<void()> start);
  // Empties the clip list or the dive list.
  void clearClips();
  void clearDives();
  // Creates the storage folders if missing. On failure the folder error text goes to
  // error when given, else to the front end as a box.
  bool createFolders(QString *error = nullptr);

 private:
  void pollQuiet(std::function<void()> start, int64_t giveUpAt);

  QObject anchor_;  // the quiet-line polls die with the session
};
