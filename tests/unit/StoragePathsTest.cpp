#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>

#include "StoragePaths.h"
#include "SystemLog.h"
#include "TestSupport.h"

namespace {

TEST(StoragePaths, CreatesBothFoldersBelowDownloadsAndKeepsThem) {
  TemporaryHome home;
  StoragePaths paths;
  QStringList boxes;
  const auto box = [&boxes](const QString &text) { boxes << text; };

  ASSERT_TRUE(CreateFolder(paths, DownloadsFolder(), box));
  EXPECT_EQ(paths.g_voice_folder_path, home.downloads() + "/Mrvtq5dk/voice");
  EXPECT_EQ(paths.g_log_folder_path, home.downloads() + "/Mrvtq5dk/log");
  EXPECT_EQ(paths.g_temp_voice_file_path, home.downloads() + "/Mrvtq5dk/tempVoiceData.bin");
  EXPECT_TRUE(QFileInfo(paths.g_voice_folder_path).isDir());
  EXPECT_TRUE(QFileInfo(paths.g_log_folder_path).isDir());

  // A second call finds them and leaves what is inside alone.
  WriteFile(paths.g_voice_folder_path + "/kept.wav", "RIFF");
  ASSERT_TRUE(CreateFolder(paths, DownloadsFolder(), box));
  EXPECT_TRUE(QFileInfo::exists(paths.g_voice_folder_path + "/kept.wav"));
  EXPECT_TRUE(boxes.isEmpty());
}

TEST(StoragePaths, VoiceFolderFailureShowsItsBoxAndStops) {
  TemporaryHome home;
  // A file where the application's folder belongs: no folder can be made below it, even
  // by root.
  ASSERT_TRUE(QDir().mkpath(home.downloads()));
  WriteFile(home.downloads() + "/Mrvtq5dk", "not a folder");
  LogCapture log;
  StoragePaths paths;
  QStringList boxes;

  EXPECT_FALSE(CreateFolder(paths, DownloadsFolder(), [&boxes](const QString &text) { boxes << text; }));
  EXPECT_EQ(boxes, QStringList{"voice folder create error!"});
  EXPECT_EQ(log.startingWith("create voice folder Error. ").size(), 1u);
  EXPECT_TRUE(log.startingWith("create logs folder Error.").empty());
}

TEST(StoragePaths, PathComponentsJoinWithOneSlash) {
  EXPECT_EQ(AppendPathComponent("/home/d/Downloads", "/Mrvtq5dk/log"),
            "/home/d/Downloads/Mrvtq5dk/log");
  EXPECT_EQ(AppendPathComponent("/home/d/Downloads/", "Mrvtq5dk/tempVoiceData.bin"),
            "/home/d/Downloads/Mrvtq5dk/tempVoiceData.bin");
}

}  // namespace
