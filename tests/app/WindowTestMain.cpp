#include <gtest/gtest.h>

#include <QApplication>

#include "Localization.h"

int main(int argc, char **argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  QApplication app(argc, argv);
  InstallStringTables(QLocale(QLocale::English));
  return RUN_ALL_TESTS();
}
