// mrvtq5dk-cli on the simulator's pty: its exit statuses, and "sync", which saves what is new on
// the device once, remembered in the library across runs.
#include <signal.h>

#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>

#include "DiveLogCsv.h"
#include "Library.h"
#include "LogIndex.h"
#include "SimulatedDevice.h"
#include "TestSupport.h"
#include "WaveFile.h"

namespace {

const sim::Contents kDevice = sim::GenerateContents(9, QDate::currentDate());

// A fresh home (the library lives there) and output folder for each test.
class CliTest : public ::testing::Test {
 protected:
  QStringList arguments(const QStringList &verb, const sim::SimulatedDevice &device) const {
    return verb + QStringList{"--port", device.slavePath(), "--output", output.path()};
  }
  ProgramRun cli(const QStringList &verb, const sim::SimulatedDevice &device) const {
    return RunProcess(MRVTQ5DK_CLI_PATH, arguments(verb, device));
  }
  QStringList files(const char *folder) const {
    QStringList paths;
    QDirIterator it(output.filePath(QString("Mrvtq5dk/") + folder), QDir::Files);
    while (it.hasNext()) paths << it.next();
    return paths;
  }
  TemporaryHome home;
  QTemporaryDir output;
};

TEST_F(CliTest, FailuresHaveTheirOwnStatus) {
  EXPECT_EQ(RunProcess(MRVTQ5DK_CLI_PATH, {"list", "--port", "/dev/no-such-port"}).status, 3);
  // Wrong use is one line saying what was wrong, and status 2.
  const ProgramRun wrong = RunProcess(MRVTQ5DK_CLI_PATH, {"download-voice"});  // which clips?
  EXPECT_EQ(wrong.status, 2);
  EXPECT_EQ(wrong.err.count('\n'), 1) << qPrintable(wrong.err);
  EXPECT_TRUE(wrong.err.contains("--help")) << qPrintable(wrong.err);
  EXPECT_EQ(RunProcess(MRVTQ5DK_CLI_PATH, {"download-voice", "1", "--all"}).status, 2);  // both?

  sim::Options mute;  // a port where nothing answers is no device
  mute.silentCommands = {"kind"};
  EXPECT_EQ(cli({"list"}, sim::SimulatedDevice(kDevice, mute)).status, 3);

  // A range in English is taken on a Japanese desktop too (status 4 is the device's).
  EXPECT_EQ(RunProcess(MRVTQ5DK_CLI_PATH, {"list", "--range", "3 weeks"}).status, 2);
  sim::Contents other = kDevice;
  other.model = "QM999XX";
  const QMap<QString, QString> japanese{{"LANG", "ja_JP.UTF-8"}, {"LC_ALL", "ja_JP.UTF-8"}};
  EXPECT_EQ(
      RunProcess(MRVTQ5DK_CLI_PATH,
                 arguments({"list", "--range", "3 months"}, sim::SimulatedDevice(other)), japanese)
          .status,
      4);

  sim::Options stall;
  stall.stallAfterBytes = 10000;
  const ProgramRun failed = cli({"download-voice", "1"}, sim::SimulatedDevice(kDevice, stall));
  EXPECT_EQ(failed.status, 5);
  EXPECT_TRUE(failed.err.contains("the transfer failed"));
  EXPECT_TRUE(files("voice").isEmpty());

  // A file that cannot be written (here a folder has the newest dive's name) is status 6, and
  // every other dive is saved.
  const QByteArray newest = sim::DivePage(kDevice.dives.last());
  ASSERT_TRUE(
      QDir(output.path())
          .mkpath("Mrvtq5dk/log/" + DiveLogFileBaseName(DecodeDive(&newest)) + "_profile.csv"));
  EXPECT_EQ(cli({"download-log", "--all"}, sim::SimulatedDevice(kDevice)).status, 6);
  EXPECT_EQ(files("log").size(), 5);
  // So is a download folder that cannot be made (here a file is where it belongs).
  WriteFile(output.filePath("blocked"), "not a folder");
  const sim::SimulatedDevice device(kDevice);
  EXPECT_EQ(RunProcess(MRVTQ5DK_CLI_PATH, {"download-log", "1", "--port", device.slavePath(),
                                           "--output", output.filePath("blocked")})
                .status,
            6);
}

// Six dives and three clips are listed for the default range; a fourth clip starts in the same
// minute as the first and lasts as long, so both want the same file name.
sim::Contents Twins() {
  sim::Contents contents = kDevice;
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

class SyncTest : public CliTest {
 protected:
  ProgramRun sync(const sim::SimulatedDevice &device) const { return cli({"sync"}, device); }
  // Every file saved is one of the device's recordings, byte for byte, and none is there twice.
  void expectTheDevicesOwn(const sim::Contents &contents) const {
    QSet<QByteArray> recordings, seen;
    for (const sim::Clip &clip : contents.clips) {
      const QByteArray audio = sim::ClipAudio(clip, contents.ringFirst, contents.ringLast);
      recordings.insert(WaveHeader(uint64_t(audio.size())) + audio);
    }
    QTemporaryDir scratch;
    for (const sim::Dive &dive : contents.dives) {
      const QByteArray page = sim::DivePage(dive);
      ASSERT_TRUE(DiveLogCsvSave(scratch.filePath("dive.csv"), DecodeDive(&page)));
      recordings.insert(ReadFile(scratch.filePath("dive.csv")));
    }
    for (const QString &path : files("voice") + files("log")) {
      const QByteArray bytes = ReadFile(path);
      EXPECT_TRUE(recordings.contains(bytes) && !seen.contains(bytes)) << qPrintable(path);
      seen.insert(bytes);
    }
    EXPECT_EQ(seen.size(), kListedItems);
  }
};

// A sync cut off by a hang-up saves what was whole and says the rest failed; the next saves
// only what is missing, then nothing, then only what the diver deleted or changed.
TEST_F(SyncTest, SavesWhatIsNewOnceAcrossAHangUpADeletionAndARefill) {
  const sim::Contents contents = Twins();
  sim::Options cable;
  cable.hangupAfterBytes = 16 * 4096 + 300000;  // the listing's pages, then into a clip
  const ProgramRun cut = sync(sim::SimulatedDevice(contents, cable));
  EXPECT_EQ(cut.status, 5) << qPrintable(cut.err);
  EXPECT_EQ(files("log").size(), 6);
  EXPECT_TRUE(files("voice").filter(".wav").isEmpty());  // nothing partial

  sim::SimulatedDevice device(contents);
  const ProgramRun rest = sync(device);
  ASSERT_EQ(rest.status, 0) << qPrintable(rest.err);
  EXPECT_EQ(rest.out.count("saved "), 4) << qPrintable(rest.out);
  expectTheDevicesOwn(contents);
  // The same-minute clips: the later one did not replace the earlier.
  EXPECT_EQ(files("voice").filter("_voice-2.wav").size(), 1);

  const ProgramRun again = sync(device);
  EXPECT_EQ(again.status, 0) << qPrintable(again.err);
  EXPECT_TRUE(again.out.contains("Nothing new")) << qPrintable(again.out);

  // A file the diver deleted, or edited keeping its size, is saved again.
  QFile::remove(files("voice").value(0));
  const QString edited = files("log").value(0);
  WriteFile(edited, QByteArray(int(QFileInfo(edited).size()), '#'));
  const ProgramRun third = sync(device);
  EXPECT_EQ(third.status, 0) << qPrintable(third.err);
  EXPECT_EQ(third.out.count("saved "), 2) << qPrintable(third.out);
  expectTheDevicesOwn(contents);

  // Rows another program left in the library: a saved dive's row of a kind this program never
  // writes, and one whose size is no number. Neither dive counts as saved.
  EXPECT_TRUE(OtherProgramSql(Library::DefaultPath(),
                              {"UPDATE files SET kind = 'photo' WHERE rowid = (SELECT MIN(rowid) "
                               "FROM files WHERE kind = 'dive')",
                               "UPDATE files SET size = 'many' WHERE rowid = (SELECT MAX(rowid) "
                               "FROM files WHERE kind = 'dive')"}));
  const ProgramRun odd = sync(device);
  EXPECT_EQ(odd.out.count("saved "), 2) << qPrintable(odd.out);
  expectTheDevicesOwn(contents);

  // The device's memory cleared and filled again: the same numbers are other dives.
  sim::Contents refilled = contents;
  for (sim::Dive &dive : refilled.dives) dive.entry = dive.entry.addSecs(-3600);
  const ProgramRun fourth = sync(sim::SimulatedDevice(refilled));
  EXPECT_EQ(fourth.status, 0) << qPrintable(fourth.err);
  EXPECT_EQ(fourth.out.count("saved "), 6) << qPrintable(fourth.out);
}

// Ctrl-C in the first clip; then again, with the dives saved before: nothing was saved that
// time, yet the sync was stopped, not done.
TEST_F(SyncTest, CtrlCStopsMidClipWithNothingPartial) {
  sim::Options slow;
  slow.bytesPerSecond = 40000;  // a clip takes half a minute
  sim::SimulatedDevice device(Twins(), slow);
  for (int run = 0; run < 2; ++run) {
    const qsizetype asked = device.device().commands().count("vx");
    QProcess cli;
    cli.start(MRVTQ5DK_CLI_PATH, arguments({"sync"}, device));
    ASSERT_TRUE(
        WaitFor([&] { return device.device().commands().count("vx") >= asked + 5; }, 60000));
    ::kill(pid_t(cli.processId()), SIGINT);
    ASSERT_TRUE(cli.waitForFinished(30000));
    EXPECT_EQ(cli.exitCode(), 130) << run;
    EXPECT_FALSE(cli.readAllStandardOutput().contains("Nothing new")) << run;
    EXPECT_TRUE(files("voice").filter(".wav").isEmpty());
    EXPECT_EQ(files("log").size(), 6);  // what was complete stays saved
  }
}

}  // namespace
