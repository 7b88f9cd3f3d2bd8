#pragma once

#include <QCoreApplication>
#include <QTemporaryDir>
#include <cstddef>
#include <cstdint>

#include "Localization.h"
#include "SystemLog.h"

// Once per fuzzing process: a Qt application, a temporary home for the folders, the string
// tables the texts are made from, and the log kept off stderr (its lines still reach the
// system log).
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
    InstallStringTables(QLocale(QLocale::English));
    return true;
  }();
  static_cast<void>(started);
}
