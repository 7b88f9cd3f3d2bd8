#include "TerminalWindow.h"

#include <cstdio>

void TerminalWindow::messageBox(const QString &text) {
  std::lock_guard lock(mutex_);
  QString line = text;
  line.replace(QStringLiteral("\r\n"), QStringLiteral(" ")).replace(u'\n', u' ');
  std::fprintf(stderr, "%s%s\n", interactive ? "\r\033[K" : "", qPrintable(line.trimmed()));
}

void TerminalWindow::setText(Outlet outlet, const QString &text) {
  std::lock_guard lock(mutex_);
  texts_[outlet] = text;
  if (outlet == Outlet::label_type && !text.isEmpty()) identified_ = true;
}

bool TerminalWindow::identified() const {
  std::lock_guard lock(mutex_);
  return identified_;
}

void TerminalWindow::reloadList(IndexList list, const QStringList &rows) {
  std::lock_guard lock(mutex_);
  rows_[list] = rows;
}

void TerminalWindow::selectRow(IndexList list, int row) {
  std::lock_guard lock(mutex_);
  selected_[list] = row;
}

int TerminalWindow::selectedRow(IndexList list) const {
  std::lock_guard lock(mutex_);
  return selected_.value(list, -1);
}

QString TerminalWindow::text(Outlet outlet) const {
  std::lock_guard lock(mutex_);
  return texts_.value(outlet);
}

QStringList TerminalWindow::rows(IndexList list) const {
  std::lock_guard lock(mutex_);
  return rows_.value(list);
}
