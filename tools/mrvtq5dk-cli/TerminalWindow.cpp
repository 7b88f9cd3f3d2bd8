#include "TerminalWindow.h"

#include <cstdio>

void TerminalWindow::messageBox(const QString &text) {
  std::lock_guard lock(mutex_);
  QString line = text;
  line.replace(QStringLiteral("\r\n"), QStringLiteral(" ")).replace(u'\n', u' ');
  std::fprintf(stderr, "%s%s\n", interactive ? "\r\033[K" : "", qPrintable(line.trimmed()));
}

void TerminalWindow::setText(Outlet outlet, const QString &text) {
  HeadlessWindow::setText(outlet, text);
  if (outlet == Outlet::label_type && !text.isEmpty()) identified_ = true;
}
