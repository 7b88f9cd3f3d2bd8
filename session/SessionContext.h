#pragma once

#include <QList>
#include <QObject>
#include <QStringList>
#include <deque>
#include <functional>
#include <mutex>

#include "SerialChannel.h"
#include "SessionState.h"
#include "WindowOperations.h"

// The rows of the two index lists and the device-side number of each row. Touched on the
// main thread only, always in pairs.
struct IndexLists {
  QStringList items_voice_index;
  QList<int32_t> items_voice_index_number;
  QStringList items_log_index;
  QList<int32_t> items_log_index_number;
};

// Where the voice and log parts plug into the session. Set before the port opens.
struct SessionHooks {
  // Reads of the receive thread by selector, bytes followed by a terminating zero.
  std::function<void(char *bytes, size_t length)> voiceIndex, voiceData, logHistory, logData;
  // Main thread: request the selected clip; end a complete clip; close the clip file.
  std::function<void()> DownloadVoiceData, MakeWaveFile, CloseVoiceBinary;
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

  // Greys out the device controls. In DISCONNECTED and TRY_CONNECT_TX_KIND the identity
  // labels are cleared and the reconnect button is disabled too.
  void DisableButtonControl();
  // Gives the controls back when a transfer or an exchange has ended.
  void EnableTransferControls();
  // Writes a command. When it cannot be written (no port), shows "Corvamund power is off"
  // and, unless told otherwise, drops the index sequence.
  bool sendCommand(const QString &command, bool dropSequenceOnFailure = true);
  // Empties a list and its numbers, and the view with them.
  void clearList(IndexList list);
  // Creates the storage folders if missing, showing the folder error box on failure.
  bool CreateFolder();
};

// Runs work on the main thread's event loop, in the order posted. Made on the main thread;
// work still queued when it goes away is dropped with it. The work itself passes through a
// queue of ours under a mutex, so the hand-over between threads is plain to see for the
// thread sanitizer; Qt's event queue only carries the wake-up.
class MainThreadQueue {
 public:
  void post(std::function<void()> work);

 private:
  void runPending();

  QObject anchor_;
  std::mutex mutex_;
  std::deque<std::function<void()>> pending_;
};
