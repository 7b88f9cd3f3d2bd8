#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimeZone>

#include "DiveLogCsv.h"
#include "SimulatedDevice.h"
#include "SystemLog.h"
#include "TestSupport.h"
#include "VoiceIndex.h"

namespace {

const QDate kToday(2024, 2, 15);

sim::Contents Generated() {
  return sim::GenerateContents(7, kToday);
}

// What the device sends must read back through the program's own decoders exactly as
// the simulator meant it.
TEST(SimulatorContents, ClipsReadBackThroughTheVoiceIndex) {
  LogCapture quiet;
  const sim::Contents contents = Generated();
  VoiceIndexState index;
  ASSERT_TRUE(ApplyVoiceIndexReply(sim::VoiceIndexReply(contents), index));
  EXPECT_EQ(index.g_number_of_index, contents.clips.size());
  ASSERT_EQ(index.g_voice_index->size(), contents.clips.size() + 2);
  bool spansHole = false, wraps = false, before2022 = false, tooShort = false;
  for (int i = 0; i < contents.clips.size(); ++i) {
    const sim::Clip &clip = contents.clips[i];
    const QString entry = index.g_voice_index->at(i + 1);
    const int bytes = sim::ClipAudio(clip, contents.ringFirst, contents.ringLast).size();
    EXPECT_EQ(bytes, GetVoiceDataSize(entry, index.g_voice_data_block)) << qPrintable(entry);
    spansHole |= clip.startBlock < 1000 && clip.endBlock >= 1024;
    wraps |= clip.endBlock < clip.startBlock;
    before2022 |= GetVoiceDataDate(entry) < 20220101;
    tooShort |= bytes < kMinimumListedClipBytes;
  }
  EXPECT_TRUE(spansHole && wraps && before2022 && tooShort);
}

TEST(SimulatorContents, DivePagesReadBackThroughTheCsvWriter) {
  LogCapture quiet;
  const sim::Contents contents = Generated();
  QTemporaryDir dir;
  bool belowZero = false, fullProfile = false;
  for (const sim::Dive &dive : contents.dives) {
    const QByteArray page = sim::DivePage(dive);
    const QString path = dir.filePath("dive.csv");
    ASSERT_TRUE(DiveLogCsvSave(path, &page));
    const QList<QByteArray> lines = ReadFile(path).split('\n');
    const QDateTime shown =
        dive.unsetClock ? QDateTime(QDate(1999, 12, 31), dive.entry.time(), QTimeZone::utc())
                        : dive.entry;
    EXPECT_EQ(lines[0],
              "date," + shown.toTimeZone(QTimeZone(9 * 3600)).toString("yyyy-MM-dd").toLatin1());
    EXPECT_EQ(lines[15], "profile size," + QByteArray::number(dive.profile.size()));
    for (int k = 0; k < dive.profile.size(); ++k) {
      const QList<QByteArray> fields = lines[21 + k].split(',');
      ASSERT_GE(fields.size(), 8);
      EXPECT_EQ(fields[0].toInt(), k * dive.samplingSeconds);
      EXPECT_EQ(qRound(fields[1].toDouble() * 100), dive.profile[k].depthCm);
      EXPECT_EQ(qRound(fields[2].toDouble() * 10), dive.profile[k].temperatureDeci);
    }
    belowZero |= dive.temperatureDeci < 0;
    fullProfile |= dive.profile.size() == 504;
  }
  EXPECT_TRUE(belowZero && fullProfile);
}

TEST(SimulatorWire, AnswersTheIdentityAndLogCommands) {
  sim::Contents contents = Generated();
  contents.detailFields = 7;
  contents.firmware = "V1.2";
  SimulatedDevice device(contents);
  RawPort port(device.slavePath());
  port.send("#kind\r\n");
  EXPECT_EQ(port.readUntilQuiet(), "OK QM482CS\r\n");
  port.send("#detail\r\n");
  EXPECT_EQ(port.readUntilQuiet().split(' ').size(), 7);
  port.send("#gser\r\n");
  EXPECT_EQ(port.readUntilQuiet().split(' ').value(3), "28417305");
  port.send("#cdcwait 1959\r\n");
  EXPECT_EQ(port.readUntilQuiet(), "cdcwait = 1959\r\n");
  port.send("lh\r\n");
  EXPECT_EQ(port.readExactly(32), sim::HistoryRecord(contents));
  port.send("lp000011\r\n");
  EXPECT_EQ(port.readExactly(4096), sim::DivePage(contents.dives.last()));
  port.send("lp000002\r\n");  // overwritten long ago
  EXPECT_EQ(port.readExactly(4096), sim::ErasedPage());
  EXPECT_EQ(device.device().commands().first(), "#kind");
}

TEST(SimulatorWire, VhSendsNoMoreThan2040BytesUnacknowledged) {
  const sim::Contents contents = Generated();
  SimulatedDevice device(contents);
  RawPort port(device.slavePath());
  const QByteArray audio = sim::ClipAudio(contents.clips[2], contents.ringFirst, contents.ringLast);
  port.send("vh02\r\n");
  QByteArray received = port.readUntilQuiet(300);
  EXPECT_EQ(received.size(), 2040);  // then it waits
  while (received.size() < audio.size()) {
    port.send("vx\r\n");
    const QByteArray window =
        port.readExactly(std::min<qsizetype>(2040, audio.size() - received.size()));
    ASSERT_FALSE(window.isEmpty());
    received += window;
  }
  EXPECT_EQ(received, audio);
  EXPECT_EQ(device.device().largestUnacknowledged(), 2040);
}

TEST(SimulatorWire, VrStreamsAtTheLinkRate) {
  sim::Options options;
  options.bytesPerSecond = 100000;
  const sim::Contents contents = Generated();
  SimulatedDevice device(contents, options);
  RawPort port(device.slavePath());
  QElapsedTimer clock;
  clock.start();
  port.send("vr02\r\n");
  const QByteArray received = port.readExactly(200000);
  EXPECT_GE(received.size(), 200000);
  // Never faster than the link; a slow machine may only make it slower.
  EXPECT_GE(clock.elapsed(), 1900);
}

TEST(SimulatorFaults, StallsForGoodOrResumes) {
  const sim::Contents contents = Generated();
  const int clipBytes = sim::ClipBytes(contents.clips[2], contents.ringFirst, contents.ringLast);
  sim::Options options;
  options.stallAfterBytes = 10000;
  {
    SimulatedDevice device(contents, options);
    RawPort port(device.slavePath());
    port.send("vr02\r\n");
    EXPECT_EQ(port.readUntilQuiet(500).size(), 10000);
  }
  options.stallResumeMs = 400;
  options.extraBytes = 7;
  SimulatedDevice device(contents, options);
  RawPort port(device.slavePath());
  port.send("vr02\r\n");
  EXPECT_EQ(port.readUntilQuiet(250).size(), 10000);
  EXPECT_EQ(port.readUntilQuiet(500).size(), clipBytes - 10000 + 7);
}

TEST(SimulatorFaults, SplitGarbageSilenceAndWrongModel) {
  sim::Contents contents = Generated();
  contents.model = "QM999XX";
  sim::Options options;
  options.splitReplies["kind"] = {3, 7};
  options.splitGapMs = 150;
  options.garbageReplies = {"detail"};
  options.silentCommands = {"gser"};
  SimulatedDevice device(contents, options);
  RawPort port(device.slavePath());
  port.send("#kind\r\n");
  EXPECT_EQ(port.readOnce(1000), "OK ");
  EXPECT_EQ(port.readOnce(1000), "QM99");
  EXPECT_EQ(port.readOnce(1000), "9XX\r\n");
  port.send("#detail\r\n");
  const QByteArray garbage = port.readUntilQuiet();
  EXPECT_EQ(garbage.size(), QByteArray("OK 1.180 QM482 2023-10-01 JPN BAT85\r\n").size());
  EXPECT_FALSE(garbage.startsWith("OK "));
  port.send("#gser\r\n");
  EXPECT_TRUE(port.readUntilQuiet(300).isEmpty());
}

TEST(SimulatorFaults, OversizedIndexAndProfileAndHangUp) {
  sim::Contents contents = Generated();
  for (sim::Dive &dive : contents.dives) dive.profileSizeWord = 600;
  sim::Options options;
  options.longIndex = true;
  options.hangupAfterBytes = 4096 + 1000;
  SimulatedDevice device(contents, options);
  RawPort port(device.slavePath());
  port.send("vi\r\n");
  const QByteArray index = port.readUntilQuiet();
  EXPECT_GT(index.size(), 4096);
  EXPECT_TRUE(index.endsWith(",\r\n"));
  port.send("lp000011\r\n");
  const QByteArray page = port.readExactly(4096);
  ASSERT_EQ(page.size(), 4096);
  EXPECT_EQ(uint8_t(page[4072]) | uint8_t(page[4073]) << 8, 600);
  port.send("lp000010\r\n");
  EXPECT_EQ(port.readExactly(4096).size(), 1000);
  EXPECT_TRUE(port.sawEndOfFile());
  EXPECT_TRUE(device.device().hungUp());
}

}  // namespace

namespace {

// The program itself, as the demo and a developer run it: it prints the port, reads a
// scenario file, and takes options over the scenario.
TEST(SimulatorProgram, ServesAScenarioOnThePortItPrints) {
  QTemporaryDir dir;
  WriteFile(dir.filePath("scenario.json"),
            R"({"firmware": "1.170", "serial": "00001234",
                "clips": [{"start": "2023-04-05T13:07:22", "first": 2, "last": 15}]})");
  QProcess program;
  program.start(QM482_SIM_PATH,
                {"--scenario", dir.filePath("scenario.json"), "--serial", "99990000"});
  ASSERT_TRUE(program.waitForReadyRead(10000));
  const QString port = QString::fromUtf8(program.readLine()).trimmed();
  ASSERT_TRUE(port.startsWith("/dev/pts/")) << qPrintable(port);
  {
    RawPort device(port);
    device.send("#detail\r\n");
    EXPECT_TRUE(device.readUntilQuiet().startsWith("OK 1.170 "));
    device.send("#gser\r\n");
    EXPECT_EQ(device.readUntilQuiet(), "OK QM482 SN 99990000 00\r\n");
    device.send("vi\r\n");
    EXPECT_EQ(device.readUntilQuiet(), "01(002-7A7),230405-130722_002-00F,\r\n");
  }
  program.kill();
  program.waitForFinished();

  QProcess help;
  help.start(QM482_SIM_PATH, {"--help"});
  ASSERT_TRUE(help.waitForFinished(10000));
  const QByteArray text = help.readAllStandardOutput();
  for (const char *option :
       {"--stall-after", "--split", "--garbage", "--hangup-after", "--long-index"}) {
    EXPECT_TRUE(text.contains(option)) << option;
  }
}

}  // namespace
