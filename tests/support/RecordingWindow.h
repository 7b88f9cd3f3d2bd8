#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <functional>
#include <mutex>
#include <optional>

#include "LinkSupervision.h"
#include "Outcome.h"
#include "WindowOperations.h"

// A window that remembers what it was told, from any thread, in order.
class RecordingWindow : public WindowOperations {
 public:
  void messageBox(const QString &text) override { record("messageBox:" + text); }
  void setText(Outlet outlet, const QString &text) override;
  void setVisible(Outlet outlet, bool visible) override;
  void setEnabled(Outlet outlet, bool enabled) override;
  void setProgress(int percent) override;
  void EnableComboBoxVoiceIndex(bool enable) override {
    record(flag("EnableComboBoxVoiceIndex", enable));
  }
  void EnableButtonDownloadVoice(bool enable) override {
    record(flag("EnableButtonDownloadVoice", enable));
  }
  void EnableComboBoxLogIndex(bool enable) override {
    record(flag("EnableComboBoxLogIndex", enable));
  }
  void EnableButtonDownloadLog(bool enable) override {
    record(flag("EnableButtonDownloadLog", enable));
  }
  void reloadList(IndexList list, const QStringList &rows) override;
  void selectRow(IndexList list, int row) override;
  int selectedRow(IndexList list) const override;
  void setIsProcessing(bool processing) override;
  QString searchRangeText() const override { return searchRange; }
  QString searchRange = "1 month";

  // Hears how an operation ended, as a front end does: recorded as "outcome:" and the
  // sentence, in order with the window's calls.
  OutcomeHandler outcomes();
  std::optional<Outcome> lastOutcome() const;

  QStringList calls() const;
  bool called(const QString &call) const { return calls().contains(call); }
  QString text(Outlet outlet) const;
  QStringList rows(IndexList list) const;
  bool isProcessing() const;
  void clear();

 private:
  static QString flag(const char *name, bool value) {
    return QString::fromLatin1(name) + (value ? ":1" : ":0");
  }
  void record(const QString &call);

  mutable std::mutex mutex_;
  QStringList calls_;
  QMap<Outlet, QString> texts_;
  QMap<IndexList, QStringList> rows_;
  QMap<IndexList, int> selected_;
  bool processing_ = false;
  std::optional<Outcome> lastOutcome_;
};

// The supervision timer ticked by hand.
class ManualTimer : public SupervisionTimer {
 public:
  void start(std::function<void()>) override { running = true; }
  void invalidate() override { running = false; }
  bool running = false;
};

// Waits (processing Qt events) until the condition holds or the timeout passes.
bool WaitFor(const std::function<bool()> &condition, int timeoutMs = 5000);
