#include "HeadlessWindow.h"

void HeadlessWindow::setText(Outlet outlet, const QString &text) {
  std::lock_guard lock(mutex_);
  texts_[outlet] = text;
}

void HeadlessWindow::reloadList(IndexList list, const QStringList &rows) {
  std::lock_guard lock(mutex_);
  rows_[list] = rows;
}

void HeadlessWindow::selectRow(IndexList list, int row) {
  std::lock_guard lock(mutex_);
  selected_[list] = row;
}

int HeadlessWindow::selectedRow(IndexList list) const {
  std::lock_guard lock(mutex_);
  return selected_.value(list, -1);
}

void HeadlessWindow::setIsProcessing(bool processing) {
  std::lock_guard lock(mutex_);
  processing_ = processing;
}

QString HeadlessWindow::text(Outlet outlet) const {
  std::lock_guard lock(mutex_);
  return texts_.value(outlet);
}

QStringList HeadlessWindow::rows(IndexList list) const {
  std::lock_guard lock(mutex_);
  return rows_.value(list);
}

bool HeadlessWindow::isProcessing() const {
  std::lock_guard lock(mutex_);
  return processing_;
}
