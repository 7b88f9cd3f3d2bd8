#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <mutex>

#include "WindowOperations.h"

// The window's operations on a terminal: boxes become lines on stderr, labels and lists
// are kept for the job to print, selection is the job's. Safe from any thread.
class TerminalWindow : public WindowOperations {
 public:
  void messageBox(const QString &text) override;
  void setText(Outlet outlet, const QString &text) override;
  void setVisible(Outlet, bool) override {}
  void setEnabled(Outlet, bool) override {}
  void setProgress(int) override {}
  void EnableComboBoxVoiceIndex(bool) override {}
  void EnableButtonDownloadVoice(bool) override {}
  void EnableComboBoxLogIndex(bool) override {}
  void EnableButtonDownloadLog(bool) override {}
  void reloadList(IndexList list, const QStringList &rows) override;
  void selectRow(IndexList list, int row) override;
  int selectedRow(IndexList list) const override;
  QString searchRangeText() const override { return searchRange; }
  void setIsProcessing(bool) override {}

  QString text(Outlet outlet) const;
  QStringList rows(IndexList list) const;
  // Whether the device ever said which model it is.
  bool identified() const;

  QString searchRange;
  bool interactive = false;  // stderr is a terminal: a progress line may need clearing

 private:
  mutable std::mutex mutex_;
  QMap<Outlet, QString> texts_;
  QMap<IndexList, QStringList> rows_;
  QMap<IndexList, int> selected_;
  bool identified_ = false;
};
