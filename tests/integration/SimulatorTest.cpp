#include <gtest/gtest.h>

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
}

}  // namespace
