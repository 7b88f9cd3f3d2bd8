#include "PendingOperation.h"

#include <QCoreApplication>

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
  std::lock_guard lock(mutex_);
  if (active_) return false;
  operation_ = operation;
  handler_ = std::move(handler);
  home_ = QCoreApplication::instance();
  active_ = true;
  return true;
}

bool PendingOperation::finish(Outcome outcome) {
  OutcomeHandler handler;
  QPointer<QObject> home;
  {
    std::lock_guard lock(mutex_);
    if (!active_ || operation_ != outcome.operation) return false;
    active_ = false;
    handler = std::move(handler_);
    handler_ = nullptr;
    home = home_;
  }
  SystemLog("operation %s ended: %d", OperationName(outcome.operation), int(outcome.failure));
  if (!handler || !home) return true;
  QMetaObject::invokeMethod(
      home.data(),
      [handler = std::move(handler), outcome = std::move(outcome)] { handler(outcome); },
      Qt::QueuedConnection);
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
