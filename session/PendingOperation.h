#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>

#include "MainThreadQueue.h"
#include "Outcome.h"

// The one operation under way on the session, and whoever waits for its outcome. The
// device does one thing at a time, so there is one slot. Made on the main thread; any
// thread may finish an operation, the first finish wins, and the handler runs on the
// main thread's event loop, never inside the call that finished it.
class PendingOperation {
 public:
  // Takes the slot for operation, to be reported to handler (may be empty). Returns false
  // (and leaves the slot as it was) when another operation holds it.
  bool begin(Operation operation, OutcomeHandler handler);
  // Ends the operation with outcome, if the slot holds one of that kind. Returns whether
  // it did.
  bool finish(Outcome outcome);
  // Ends whatever operation is under way with a failure of the given kind.
  bool fail(Failure failure, const QString &sentence);

  bool active() const { return active_.load(); }
  std::optional<Operation> current() const;

  // Hears each operation begin (with none ended) and end (none under way, with how it
  // ended), on the thread that began or ended it. Set before the first operation.
  std::function<void(std::optional<Operation> underWay, const Outcome *ended)> changed;

 private:
  mutable std::mutex mutex_;
  std::atomic<bool> active_{false};
  Operation operation_ = Operation::ConnectAndList;
  OutcomeHandler handler_;
  MainThreadQueue mainThread_;  // where handlers run
};
