#pragma once

#include <QObject>
#include <QStringList>
#include <mutex>
#include <optional>

#include "DeviceModel.h"
#include "Outcome.h"

// What a front end hears from a session, kept for the tests to ask about from any thread:
// how the operations ended, and the boxes the session asked for.
class SessionWatch {
 public:
  explicit SessionWatch(DeviceModel &model) {
    QObject::connect(&model, &DeviceModel::notice, &anchor_, [this](const QString &text) {
      std::lock_guard lock(mutex_);
      boxes_ << text;
    });
  }
  // Hears how an operation ended, as a front end does.
  OutcomeHandler outcomes() {
    return [this](const Outcome &outcome) {
      std::lock_guard lock(mutex_);
      lastOutcome_ = outcome;
    };
  }
  std::optional<Outcome> lastOutcome() const {
    std::lock_guard lock(mutex_);
    return lastOutcome_;
  }
  QStringList boxes() const {
    std::lock_guard lock(mutex_);
    return boxes_;
  }
  void clear() {
    std::lock_guard lock(mutex_);
    boxes_.clear();
    lastOutcome_.reset();
  }

 private:
  QObject anchor_;
  mutable std::mutex mutex_;
  QStringList boxes_;
  std::optional<Outcome> lastOutcome_;
};
