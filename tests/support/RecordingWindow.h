#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <mutex>
#include <optional>

#include "HeadlessWindow.h"
#include "Outcome.h"

// A window that keeps, besides the texts and rows, what the tests ask about, from any thread:
// boxes, enabling and texts as lines ("setEnabled:button_reconnect=1",
// "EnableButtonDownloadVoice:1", "outcome:" and the sentence), and how an operation ended.
class RecordingWindow : public HeadlessWindow {
 public:
  void messageBox(const QString &text) override { record("messageBox:" + text); }
  void setText(Outlet outlet, const QString &text) override {
    HeadlessWindow::setText(outlet, text);
    record("setText:" + QString(OutletName(outlet)) + "=" + text);
  }
  void setEnabled(Outlet outlet, bool on) override {
    record("setEnabled:" + QString(OutletName(outlet)) + (on ? "=1" : "=0"));
  }
  void EnableComboBoxVoiceIndex(bool on) override {
    record(QString("EnableComboBoxVoiceIndex:%1").arg(int(on)));
  }
  void setProgress(int percent) override { record(QString("setProgress:%1").arg(percent)); }
  void EnableButtonDownloadVoice(bool on) override {
    record(QString("EnableButtonDownloadVoice:%1").arg(int(on)));
  }
  // Hears how an operation ended, as a front end does.
  OutcomeHandler outcomes() {
    return [this](const Outcome &outcome) {
      record("outcome:" + outcome.sentence, [&] { lastOutcome_ = outcome; });
    };
  }
  std::optional<Outcome> lastOutcome() const {
    std::lock_guard lock(mutex_);
    return lastOutcome_;
  }
  QStringList calls() const {
    std::lock_guard lock(mutex_);
    return calls_;
  }
  bool called(const QString &call) const { return calls().contains(call); }
  void clear() {
    std::lock_guard lock(mutex_);
    calls_.clear();
    lastOutcome_.reset();
  }

 private:
  void record(const QString &call, const std::function<void()> &update = {}) {
    std::lock_guard lock(mutex_);
    if (update) update();
    calls_ << call;
  }

  QStringList calls_;
  std::optional<Outcome> lastOutcome_;
};
