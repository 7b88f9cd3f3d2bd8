#pragma once

#include <QCoreApplication>
#include <QTemporaryDir>
#include <cstddef>
#include <cstdint>

#include "SystemLog.h"
#include "WindowOperations.h"

// Once per fuzzing process: a Qt application, a temporary home for the folders, and the log
// kept off stderr (its lines still reach the system log).
inline void StartFuzzing() {
  static int argc = 1;
  static char name[] = "fuzz";
  static char *argv[] = {name, nullptr};
  static QCoreApplication app(argc, argv);
  static QTemporaryDir home;
  static bool started = [] {
    qputenv("HOME", home.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", (home.path() + "/.config").toUtf8());
    SetSystemLogEcho(false);
    return true;
  }();
  static_cast<void>(started);
}

// A window that shows nothing and chooses the first row.
class SilentWindow : public WindowOperations {
 public:
  void messageBox(const QString &) override {}
  void setText(Outlet, const QString &) override {}
  void setVisible(Outlet, bool) override {}
  void setEnabled(Outlet, bool) override {}
  void setProgress(int) override {}
  void EnableComboBoxVoiceIndex(bool) override {}
  void EnableButtonDownloadVoice(bool) override {}
  void EnableComboBoxLogIndex(bool) override {}
  void EnableButtonDownloadLog(bool) override {}
  void reloadList(IndexList, const QStringList &) override {}
  void selectRow(IndexList, int) override {}
  int selectedRow(IndexList) const override { return 0; }
  QString searchRangeText() const override { return QStringLiteral("5 years"); }
  void setIsProcessing(bool) override {}
};
