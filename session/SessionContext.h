#pragma once

#include <QList>
#include <QObject>
#include <QStringList>
#include <deque>
#include <functional>
#include <mutex>

#include "PendingOperation.h"
#include "SerialChannel.h"
#include "SessionState.h"
#include "Transitions.h"
#include "WindowOperations.h"

// The rows of the two index lists and the device-side number of each row. Touched on the
// main thread only, always in pairs.
struct IndexLists {
  QStringList items_voice_index;
  QList<int32_t> items_voice_index_number;
  QStringList items_log_index;
  QList<int32_t> items_log_index_number;
};

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
// window, the lists, the hooks, and the few steps that every flow takes.
class SessionContext {
 public:
  explicit SessionContext(WindowOperations &window) : window(window) {}

  SessionState state;
  SerialChannel channel;
  WindowOperations &window;
  IndexLists lists;
  SessionHooks hooks;
  // Where the storage folders go: the user's Downloads folder unless a front end says.
  std::function<QString()> downloadsFolder = [] { return DownloadsFolder(); };
  // The operation under way and whoever waits for its outcome.
  PendingOperation operation;
  // Milliseconds on a steady clock, for the reply deadline; tests move it by hand.
  std::function<int64_t()> clockMs = SteadyClockMs;
  Transitions transitions{*this};

  // Greys out the device controls. In DISCONNECTED and TRY_CONNECT_TX_KIND the identity
  // labels are cleared and the reconnect button is disabled too.
  void disableControls();
  // Gives the controls back when a transfer or an exchange has ended.
  void enableTransferControls();
  // Runs start once the line is quiet (the tail of an earlier reply drained, the reply to
  // a closing "#detail" in), on the main thread; at the latest after the reply deadline.
  // Never once the port has gone (Transitions::portGoneBeforeRequest says what then).
  void whenLineQuiet(std::function<void()> start);
  // Empties a list and its numbers, and the view with them.
  void clearList(IndexList list);
  // Creates the storage folders if missing. On failure the folder error text goes to
  // error when given, else to the window as a box.
  bool createFolders(QString *error = nullptr);

 private:
  void pollQuiet(std::function<void()> start, int64_t giveUpAt);

  QObject anchor_;  // the quiet-line polls die with the session
};
