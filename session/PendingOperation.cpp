#include "PendingOperation.h"

#include "SystemLog.h"

namespace {

const char *OperationName(Operation operation) {
  switch (operation) {
    case Operation::ConnectAndList:
      return "connect";
    case Operation::DownloadClip:
      return "clip";
    case Operation::DownloadDive:
      return "dive";
  }
  return "";
}

}  // namespace

bool PendingOperation::begin(Operation operation, OutcomeHandler handler) {
  {
    std::lock_guard lock(mutex_);
    if (active_) return false;
    operation_ = operation;
    handler_ = std::move(handler);
    active_ = true;
  }
  if (changed) changed(operation, nullptr);  // unlocked: a listener may ask what is under way
  return true;
}

bool PendingOperation::finish(Outcome outcome) {
  OutcomeHandler handler;
  {
    std::lock_guard lock(mutex_);
    if (!active_ || operation_ != outcome.operation) return false;
    active_ = false;
    handler = std::move(handler_);
    handler_ = nullptr;
  }
  if (changed) changed(std::nullopt, &outcome);
  SystemLog("operation %s ended: %d", OperationName(outcome.operation), int(outcome.failure));
  if (!handler) return true;
  mainThread_.post(
      [handler = std::move(handler), outcome = std::move(outcome)] { handler(outcome); });
  return true;
}

bool PendingOperation::fail(Failure failure, const QString &sentence) {
  const std::optional<Operation> operation = current();
  if (!operation) return false;
  return finish(Outcome{*operation, failure, sentence, {}});
}

std::optional<Operation> PendingOperation::current() const {
  std::lock_guard lock(mutex_);
  if (!active_) return std::nullopt;
  return operation_;
}
