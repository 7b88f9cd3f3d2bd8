#pragma once

#include <QObject>
#include <QStringList>
#include <optional>

#include "DeviceModel.h"
#include "Outcome.h"

// What a front end hears from a session, on the main thread: how the operations ended, and
// the boxes the session asked for.
struct SessionWatch {
  explicit SessionWatch(DeviceModel &model) {
    QObject::connect(&model, &DeviceModel::notice, &anchor,
                     [this](const QString &text) { boxes << text; });
  }
  OutcomeHandler outcomes() {
    return [this](const Outcome &outcome) { lastOutcome = outcome; };
  }
  void clear() {
    boxes.clear();
    lastOutcome.reset();
  }

  QObject anchor;
  QStringList boxes;
  std::optional<Outcome> lastOutcome;
};
