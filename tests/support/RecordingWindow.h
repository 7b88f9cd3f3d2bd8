#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <mutex>
#include <optional>

#include "HeadlessWindow.h"
#include "LinkSupervision.h"
#include "Outcome.h"
#include "TestSupport.h"

// A window that remembers what it was told, from any thread, in order: each call as a line
// ("setEnabled:button_reconnect=1", "EnableButtonDownloadLog:0", "outcome:" and the sentence of how
// an operation ended), and the texts, rows and selection as they stand.
class RecordingWindow : public HeadlessWindow {
 public:
  RecordingWindow() { searchRange = "1 month"; }
  void messageBox(const QString &text) override { record("messageBox:" + text); }
  void setText(Outlet outlet, const QString &text) override {
    HeadlessWindow::setText(outlet, text);
    record("setText:" + Name(outlet) + "=" + text);
  }
  void setVisible(Outlet outlet, bool on) override {
    record("setVisible:" + Name(outlet) + (on ? "=1" : "=0"));
  }
  void setEnabled(Outlet outlet, bool on) override {
    record("setEnabled:" + Name(outlet) + (on ? "=1" : "=0"));
  }
  void setProgress(int percent) override { record("setProgress:" + QString::number(percent)); }
  void EnableComboBoxVoiceIndex(bool on) override { record(Flag("EnableComboBoxVoiceIndex", on)); }
  void EnableButtonDownloadVoice(bool on) override {
    record(Flag("EnableButtonDownloadVoice", on));
  }
  void EnableComboBoxLogIndex(bool on) override { record(Flag("EnableComboBoxLogIndex", on)); }
  void EnableButtonDownloadLog(bool on) override { record(Flag("EnableButtonDownloadLog", on)); }
  void reloadList(IndexList list, const QStringList &rows) override {
    HeadlessWindow::reloadList(list, rows);
    record(QString("reloadList:%1=%2").arg(Name(list)).arg(rows.size()));
  }
  void selectRow(IndexList list, int row) override {
    HeadlessWindow::selectRow(list, row);
    record(QString("selectRow:%1=%2").arg(Name(list)).arg(row));
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
  static QString Name(Outlet outlet) { return QString::fromLatin1(OutletName(outlet)); }
  static QString Name(IndexList list) { return list == IndexList::Voice ? "voice" : "log"; }
  static QString Flag(const char *name, bool on) {
    return QString::fromLatin1(name) + (on ? ":1" : ":0");
  }
  void record(const QString &call, const std::function<void()> &update = {}) {
    std::lock_guard lock(mutex_);
    if (update) update();
    calls_ << call;
  }

  QStringList calls_;
  std::optional<Outcome> lastOutcome_;
};

// The supervision timer ticked by hand.
class ManualTimer : public SupervisionTimer {
 public:
  void start(std::function<void()>) override { running = true; }
  void invalidate() override { running = false; }
  bool running = false;
};
