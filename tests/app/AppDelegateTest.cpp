#include <gtest/gtest.h>

#include <QFile>
#include <QStandardPaths>

#include "AppDelegate.h"
#include "TestSupport.h"

namespace {

// The store is opened on first use only, and quitting is refused only while a clip downloads.
TEST(AppDelegate, RefusesToQuitOnlyWhileAClipDownloadsAndOpensTheStoreLate) {
  TemporaryHome home;
  const QString store =
      QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/Mrvtq5dk.sqlite";
  AppDelegate delegate;
  delegate.launched();
  EXPECT_FALSE(QFile::exists(store));
  EXPECT_EQ(delegate.confirmQuit(), AppDelegate::TerminateReply::Now);
  EXPECT_TRUE(delegate.quitsWithLastWindow());
  delegate.save();
  EXPECT_TRUE(QFile::exists(store));
  EXPECT_TRUE(delegate.persistentContainer().tables().isEmpty());
  EXPECT_EQ(delegate.confirmQuit(), AppDelegate::TerminateReply::Now);
  delegate.clipUnderWay = true;
  EXPECT_EQ(delegate.confirmQuit(), AppDelegate::TerminateReply::Cancel);
  EXPECT_FALSE(delegate.quitsWithLastWindow());
  EXPECT_FALSE(delegate.mayClose());
}

}  // namespace
