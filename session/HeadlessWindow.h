#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <mutex>

#include "WindowOperations.h"

// The window's operations kept as values instead of shown: texts, rows, the selection and
// whether a clip is downloading, as they stand, safe from any thread. What only a screen
// shows (boxes, visibility, enabling, progress) is dropped. Front ends without a screen
// build on it.
class HeadlessWindow : public WindowOperations {
 public:
  void messageBox(const QString &) override {}
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
  void setIsProcessing(bool processing) override;

  QString text(Outlet outlet) const;
  QStringList rows(IndexList list) const;
  bool isProcessing() const;

 protected:
  mutable std::mutex mutex_;

 private:
  QMap<Outlet, QString> texts_;
  QMap<IndexList, QStringList> rows_;
  QMap<IndexList, int> selected_;
  bool processing_ = false;
};
