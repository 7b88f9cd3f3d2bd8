#include <signal.h>

#include <gtest/gtest.h>
#include <QDir>
#include <QDirIterator>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>

#include "DiveLogCsv.h"
#include "RecordingWindow.h"
#include "SimulatedDevice.h"
#include "TestSupport.h"
#include "WaveFile.h"

namespace {

// Six dives and three clips are listed for the default range; the fourth clip starts in
// the same minute as the first and lasts as long, so both want the same file name.
sim::Contents Device() {
  sim::Contents contents = sim::GenerateContents(9, QDate::currentDate());
  sim::Clip &first = contents.clips[2];
  first.start.setTime(QTime(first.start.time().hour(), first.start.time().minute(), 5));
  sim::Clip twin = first;
  twin.start = first.start.addSecs(30);
  twin.startBlock = 0x020;
  twin.endBlock = 0x028;
  twin.toneSeed = first.toneSeed + 1;
  contents.clips.append(twin);
  return contents;
}
constexpr int kListedItems = 6 + 4;

class SyncTest : public ::testing::Test {
 protected:
  QStringList arguments(const SimulatedDevice &device) const {
    return {"sync", "--port", device.slavePath(), "--output", output.path()};
  }
  ProgramRun sync(const SimulatedDevice &device) const {
    return RunProcess(MRVTQ5DK_CLI_PATH, arguments(device), {{"XDG_DATA_HOME", data.path()}});
  }
  QStringList files(const char *folder) const {
    QStringList paths;
    QDirIterator it(output.filePath(QString("Mrvtq5dk/") + folder), QDir::Files);
    while (it.hasNext()) paths << it.next();
    return paths;
  }
  // Every file saved is one of the device's recordings, byte for byte, and none is there
  // twice.
  void expectTheDevicesOwn(const sim::Contents &contents, int count) const {
    QSet<QByteArray> recordings;
    for (const sim::Clip &clip : contents.clips) {
      const QByteArray audio = sim::ClipAudio(clip, contents.ringFirst, contents.ringLast);
      recordings.insert(WaveHeader(uint64_t(audio.size())) + audio);
    }
    QTemporaryDir scratch;
    for (const sim::Dive &dive : contents.dives) {
      const QByteArray page = sim::DivePage(dive);
      ASSERT_TRUE(DiveLogCsvSave(scratch.filePath("dive.csv"), &page));
      recordings.insert(ReadFile(scratch.filePath("dive.csv")));
    }
    QSet<QByteArray> seen;
    for (const QString &path : files("voice") + files("log")) {
      const QByteArray bytes = ReadFile(path);
      EXPECT_TRUE(recordings.contains(bytes)) << qPrintable(path) << " is not the device's";
      EXPECT_FALSE(seen.contains(bytes)) << qPrintable(path) << " is there twice";
      seen.insert(bytes);
    }
    EXPECT_EQ(seen.size(), count);
  }
  static int clipRequests(const SimulatedDevice &device) {
    int count = 0;
    for (const QByteArray &command : const_cast<SimulatedDevice &>(device).device().commands())
      count += command.startsWith("vh") || command.startsWith("vr");
    return count;
  }
  QTemporaryDir output, data;
};

TEST_F(SyncTest, SavesEverythingOnceThenNothingThenOnlyWhatWasDeleted) {
  const sim::Contents contents = Device();
  SimulatedDevice device(contents);
  const ProgramRun first = sync(device);
  ASSERT_EQ(first.status, 0) << qPrintable(first.err);
  expectTheDevicesOwn(contents, kListedItems);
  EXPECT_EQ(first.out.count("saved "), kListedItems);
  // The same-minute clips: the later one did not replace the earlier.
  EXPECT_EQ(files("voice").filter("_voice-2.wav").size(), 1);

  const int clipsBefore = clipRequests(device);
  const ProgramRun second = sync(device);
  EXPECT_EQ(second.status, 0) << qPrintable(second.err);
  EXPECT_TRUE(second.out.contains("Nothing new")) << qPrintable(second.out);
  EXPECT_EQ(clipRequests(device), clipsBefore);

  // A file the diver deleted or changed is not saved any more.
  QFile::remove(files("voice").value(0));
  WriteFile(files("log").value(0), "edited by hand");
  const ProgramRun third = sync(device);
  EXPECT_EQ(third.status, 0) << qPrintable(third.err);
  EXPECT_EQ(third.out.count("saved "), 2) << qPrintable(third.out);
  EXPECT_EQ(clipRequests(device), clipsBefore + 1);
  expectTheDevicesOwn(contents, kListedItems);

  // The device's memory cleared and filled again: the same numbers are other dives.
  sim::Contents refilled = contents;
  for (sim::Dive &dive : refilled.dives) dive.entry = dive.entry.addSecs(-3600);
  SimulatedDevice again(refilled);
  const ProgramRun fourth = sync(again);
  EXPECT_EQ(fourth.status, 0) << qPrintable(fourth.err);
  EXPECT_EQ(fourth.out.count("saved "), 6) << qPrintable(fourth.out);
}

TEST_F(SyncTest, AfterAHangUpMidClipTheNextSyncFetchesOnlyWhatIsMissing) {
  const sim::Contents contents = Device();
  sim::Options cable;
  cable.hangupAfterBytes = 16 * 4096 + 300000;  // the listing's pages, then into a clip
  {
    SimulatedDevice hangingUp(contents, cable);
    const ProgramRun cut = sync(hangingUp);
    EXPECT_EQ(cut.status, 5) << qPrintable(cut.err);
    EXPECT_EQ(files("log").size(), 6);
    EXPECT_TRUE(files("voice").filter(".wav").isEmpty());  // nothing partial
  }
  SimulatedDevice device(contents);
  const ProgramRun rest = sync(device);
  ASSERT_EQ(rest.status, 0) << qPrintable(rest.err);
  EXPECT_EQ(rest.out.count("saved "), 4) << qPrintable(rest.out);
  expectTheDevicesOwn(contents, kListedItems);
}

TEST_F(SyncTest, CtrlCStopsMidClipWithNothingPartialAndABrokenLibraryIsSetAside) {
  QDir(data.path()).mkpath("Mrvtq5dk");
  WriteFile(data.filePath("Mrvtq5dk/Mrvtq5dk.sqlite"), QByteArray(8192, '\x5a'));
  sim::Options slow;
  slow.bytesPerSecond = 40000;  // a clip takes half a minute
  SimulatedDevice device(Device(), slow);
  QProcess cli;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert("XDG_DATA_HOME", data.path());
  cli.setProcessEnvironment(environment);
  cli.start(MRVTQ5DK_CLI_PATH, arguments(device));
  ASSERT_TRUE(WaitFor([&] { return clipRequests(device) == 1; }, 60000));
  ASSERT_TRUE(WaitFor([&] { return device.device().commands().count("vx") >= 5; }));
  ::kill(pid_t(cli.processId()), SIGINT);
  ASSERT_TRUE(cli.waitForFinished(5000));
  EXPECT_EQ(cli.exitCode(), 130);
  EXPECT_TRUE(files("voice").filter(".wav").isEmpty());
  EXPECT_EQ(files("log").size(), 6);  // what was complete stays saved
  const QString err = QString::fromUtf8(cli.readAllStandardError());
  EXPECT_TRUE(err.contains(".broken-")) << qPrintable(err);
  EXPECT_EQ(QDir(data.filePath("Mrvtq5dk")).entryList({"Mrvtq5dk.sqlite.broken-*"}).size(), 1);
}

}  // namespace
