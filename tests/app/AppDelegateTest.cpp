#include <gtest/gtest.h>

#include <QFile>
#include <QStandardPaths>

#include "AppDelegate.h"
#include "TestSupport.h"

namespace {

TEST(AppDelegate, RefusesToQuitOrCloseOnlyWhileAClipIsDownloading) {
  AppDelegate delegate;
  delegate.applicationDidFinishLaunching();
  EXPECT_EQ(delegate.applicationShouldTerminate(), AppDelegate::TerminateReply::Now);
  EXPECT_TRUE(delegate.applicationShouldTerminateAfterLastWindowClosed());
  delegate.isProcessing = true;
  EXPECT_EQ(delegate.applicationShouldTerminate(), AppDelegate::TerminateReply::Cancel);
  EXPECT_FALSE(delegate.applicationShouldTerminateAfterLastWindowClosed());
  EXPECT_FALSE(delegate.windowShouldClose());
}

TEST(AppDelegate, StoreIsOpenedOnFirstUseAndHoldsNothing) {
  TemporaryHome home;
  const QString store =
      QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/Mrvtq5dk.sqlite";
  AppDelegate delegate;
  EXPECT_FALSE(QFile::exists(store));  // nothing opened at launch
  EXPECT_TRUE(delegate.persistentContainer().isOpen());
  delegate.save();
  EXPECT_TRUE(QFile::exists(store));
  EXPECT_TRUE(delegate.persistentContainer().tables().isEmpty());
  EXPECT_EQ(delegate.applicationShouldTerminate(), AppDelegate::TerminateReply::Now);
}

}  // namespace
