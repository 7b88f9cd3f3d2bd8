#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "StoragePaths.h"
#include "SystemLog.h"
#include "TestSupport.h"

namespace {

// A folder that cannot be made shows its own box and stops the start-up (the voice folder's
// is seen from the window's start-up); once they can be made, both are, below Downloads, and
// a second start-up leaves what is inside alone.
TEST(StoragePaths, AFolderThatCannotBeMadeShowsItsBoxAndStops) {
  TemporaryHome home;
  const QString app = home.downloads() + "/Mrvtq5dk";
  LogCapture log;
  StoragePaths paths;
  QStringList boxes;
  const auto box = [&boxes](const QString &text) { boxes << text; };
  ASSERT_TRUE(QDir().mkpath(app));
  // A link to nowhere: it is not there for the program, yet no folder can be made at it.
  ASSERT_TRUE(QFile::link(home.path() + "/gone", app + "/log"));
  EXPECT_FALSE(CreateFolder(paths, DownloadsFolder(), box));
  EXPECT_EQ(boxes, QStringList{"logs folder create error!"});
  EXPECT_EQ(log.startingWith("create logs folder Error. ").size(), 1u);

  ASSERT_TRUE(QFile::remove(app + "/log"));
  WriteFile(app + "/voice/kept.wav", "RIFF");
  ASSERT_TRUE(CreateFolder(paths, DownloadsFolder(), box));
  EXPECT_EQ(paths.clipInProgressFile, app + "/tempVoiceData.bin");
  EXPECT_TRUE(QFileInfo(paths.logFolder).isDir());
  EXPECT_TRUE(QFileInfo::exists(paths.voiceFolder + "/kept.wav"));
}

}  // namespace
