#include "TerminalWindow.h"

#include <cstdio>

void TerminalWindow::messageBox(const QString &text) {
  std::lock_guard lock(mutex_);
  messages_ << text;
  QString line = text;
  line.replace(QStringLiteral("\r\n"), QStringLiteral(" ")).replace(u'\n', u' ');
  std::fprintf(stderr, "%s%s\n", interactive ? "\r\033[K" : "", qPrintable(line.trimmed()));
}

void TerminalWindow::setText(Outlet outlet, const QString &text) {
  std::lock_guard lock(mutex_);
  texts_[outlet] = text;
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

QStringList TerminalWindow::takeMessages() {
  std::lock_guard lock(mutex_);
  return std::exchange(messages_, {});
}
