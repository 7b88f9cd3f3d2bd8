#pragma once

#include <QString>
#include <QStringList>
#include <atomic>
#include <cstdint>
#include <mutex>

#include "Protocol.h"
#include "StoragePaths.h"

// A value shared between threads that is more than a word: read as a copy, replaced whole.
template <typename T>
class Guarded {
 public:
  T get() const {
    std::lock_guard lock(mutex_);
    return value_;
  }
  void set(T value) {
    std::lock_guard lock(mutex_);
    value_ = std::move(value);
  }
  template <typename F>
  auto with(F &&f) {
    std::lock_guard lock(mutex_);
    return f(value_);
  }
  template <typename F>
  auto with(F &&f) const {
    std::lock_guard lock(mutex_);
    return f(value_);
  }

 private:
  mutable std::mutex mutex_;
  T value_{};
};

// Everything the session's threads share: the main thread (timers, user actions), the
// receive thread and discovery. Each word is atomic; the timers and the receive thread
// touch a given word at different steps of the protocol, so no update spans two words.
struct SessionState {
  std::atomic<int32_t> phase{TRY_CONNECT_TX_KIND};
  std::atomic<int32_t> receiveType{eSERIAL_RX_RESPONSE};
  std::atomic<int32_t> indexSequence{0};
  std::atomic<int32_t> flowControl{0};

  // Voice transfer.
  std::atomic<int32_t> clipDownloadActive{0};
  std::atomic<int32_t> clipSize{0};
  std::atomic<int32_t> clipReceived{0};
  std::atomic<int32_t> clipUnacked{0};
  std::atomic<int32_t> clipIdleTicks{0};
  std::atomic<int32_t> clipRetries{0};
  std::atomic<int32_t> cdcwaitLevel{0};  // kept for the whole run

  // Log listing and download.
  std::atomic<int32_t> historyNumber{0};
  std::atomic<int32_t> historyCount{0};
  std::atomic<int32_t> historyStart{0};
  std::atomic<int32_t> logNumber{0};
  std::atomic<int32_t> pageReceived{0};
  std::atomic<int32_t> logDownloadMode{0};
  std::atomic<int32_t> pageOffset{0};
  std::atomic<int32_t> searchFromDate{20220101};

  // Set by the receive thread when it starts, cleared when it ends after a read error.
  std::atomic<bool> readThreadRunning{false};

  // When the line last showed life (a request sent, a byte received), in milliseconds of
  // the session's clock: a reply is overdue when this is older than the reply deadline.
  std::atomic<int64_t> lastLineActivityMs{0};
  // When the last byte arrived: the next request waits for the line to fall quiet.
  std::atomic<int64_t> lastByteMs{0};
  // A listing or a download ended with "#detail", whose reply has not arrived yet.
  std::atomic<bool> trailingReplyPending{false};

  // USB discovery: matching devices attached, and whether its first pass is still to come.
  std::atomic<int32_t> deviceExist{0};
  std::atomic<bool> initialRunning{true};

  // voiceFolder, logFolder, clipInProgressFile
  Guarded<StoragePaths> paths;
};
