#include <gtest/gtest.h>

#include <QCoreApplication>

#include "Localization.h"

int main(int argc, char **argv) {
  testing::InitGoogleTest(&argc, argv);
  QCoreApplication app(argc, argv);
  InstallStringTables(QLocale(QLocale::English));
  return RUN_ALL_TESTS();
}
