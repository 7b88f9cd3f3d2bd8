#include <gtest/gtest.h>

#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtEndian>
#include <cmath>

#include "SystemLog.h"
#include "TestSupport.h"
#include "WaveFile.h"

namespace {

uint32_t Le32(const QByteArray &bytes, int offset) {
  return qFromLittleEndian<uint32_t>(bytes.constData() + offset);
}
uint16_t Le16(const QByteArray &bytes, int offset) {
  return qFromLittleEndian<uint16_t>(bytes.constData() + offset);
}

// A second of a 440 Hz tone as the device sends it: 16-bit little-endian samples.
QByteArray Tone(int samples) {
  QByteArray audio;
  for (int i = 0; i < samples; ++i) {
    const auto sample = static_cast<int16_t>(8000 * std::sin(2 * M_PI * 440 * i / 8000.0));
    char bytes[2];
    qToLittleEndian(sample, bytes);
    audio.append(bytes, 2);
  }
  return audio;
}

TEST(WaveFileName, DateTimeAndMinutesOfTheEntry) {
  EXPECT_EQ(MakeVoiceWaveFileName("230405-130722_002-00F", "/d/Mrvtq5dk/voice", {}),
            "/d/Mrvtq5dk/voice/2023-04-05_13-07_2_voice.wav");
  EXPECT_EQ(MakeVoiceWaveFileName("991231_235900-7A0-005", "/v", {}),
            "/v/2099-12-31_23-59_2_voice.wav");
  EXPECT_EQ(MakeVoiceWaveFileName("230405-130722_002-00", "/v", {}), std::nullopt);
  // Found by fuzzing: the index may carry zero bytes (and a hostile one slashes), which
  // must neither cut the name short nor lead out of the folder.
  EXPECT_EQ(MakeVoiceWaveFileName(QString::fromLatin1("211115-0\0\x30\0"
                                                      "11A_002-009",
                                                      21),
                                  "/v", {}),
            "/v/2021-11-15_0_-0__1_voice.wav");
  EXPECT_EQ(MakeVoiceWaveFileName("/../..-../..._002-009", "/v", {}),
            "/v/20_.-._-.._..-_._1_voice.wav");
}

TEST(WaveHeader, DeclaresSixteenBitMonoAtEightKilohertz) {
  const QByteArray header = WaveHeader(3264000);
  ASSERT_EQ(header.size(), 44);
  EXPECT_EQ(header.left(4), "RIFF");
  EXPECT_EQ(Le32(header, 4), 3264036u);
  EXPECT_EQ(header.mid(8, 8), "WAVEfmt ");
  EXPECT_EQ(Le32(header, 16), 16u);
  EXPECT_EQ(Le16(header, 20), 1);
  EXPECT_EQ(Le16(header, 22), 1);
  EXPECT_EQ(Le32(header, 24), 8000u);
  EXPECT_EQ(Le32(header, 28), 16000u);
  EXPECT_EQ(Le16(header, 32), 2);
  EXPECT_EQ(Le16(header, 34), 16);
  EXPECT_EQ(header.mid(36, 4), "data");
  EXPECT_EQ(Le32(header, 40), 3264000u);
  // Lengths are cut to 32 bits.
  EXPECT_EQ(Le32(WaveHeader(0x100000000ull - 10), 4), 26u);
}

class Bin2wav8kTest : public ::testing::Test {
 protected:
  QTemporaryDir dir;
  QString clip = dir.filePath("tempVoiceData.bin");
  QString wave = dir.filePath("2023-04-05_13-07_2_voice.wav");
};

TEST_F(Bin2wav8kTest, ClipBecomesAPlayableWaveAndTheTemporaryFileGoes) {
  const QByteArray audio = Tone(8000);
  WriteFile(clip, audio);
  WriteFile(wave, "an older download of the same name");
  LogCapture log;

  ASSERT_TRUE(Bin2wav8k(clip, wave));
  const QByteArray written = ReadFile(wave);
  EXPECT_EQ(written.size(), 44 + audio.size());
  EXPECT_EQ(written.mid(44), audio);
  EXPECT_FALSE(QFile::exists(clip));
  EXPECT_TRUE(log.contains("Bin2wav8k read_data read OK.size=16000."));

  // An independent reader agrees on the format and the length.
  const QString soxi = QStandardPaths::findExecutable("soxi");
  ASSERT_FALSE(soxi.isEmpty()) << "soxi (package sox) is needed for this test";
  EXPECT_EQ(RunProgram(soxi, {"-r", wave}).trimmed(), "8000");
  EXPECT_EQ(RunProgram(soxi, {"-c", wave}).trimmed(), "1");
  EXPECT_EQ(RunProgram(soxi, {"-b", wave}).trimmed(), "16");
  EXPECT_EQ(RunProgram(soxi, {"-s", wave}).trimmed(), "8000");
}

TEST_F(Bin2wav8kTest, EmptyClipGivesAHeaderOnly) {
  WriteFile(clip, "");
  ASSERT_TRUE(Bin2wav8k(clip, wave));
  const QByteArray written = ReadFile(wave);
  ASSERT_EQ(written.size(), 44);
  EXPECT_EQ(Le32(written, 4), 36u);
  EXPECT_EQ(Le32(written, 40), 0u);
}

TEST_F(Bin2wav8kTest, FullDiskKeepsTheReceivedClip) {
  const QByteArray audio = Tone(4000);
  WriteFile(clip, audio);
  LogCapture log;
  {
    FileSizeLimit limit(1000);
    EXPECT_FALSE(Bin2wav8k(clip, wave));
  }
  EXPECT_EQ(ReadFile(clip), audio);
  EXPECT_FALSE(QFile::exists(wave));
  EXPECT_EQ(log.startingWith("Bin2wav8k write error:").size(), 1u);
}

TEST_F(Bin2wav8kTest, MissingInputsAreLoggedNotWritten) {
  LogCapture log;
  EXPECT_FALSE(Bin2wav8k(QString(), wave));
  EXPECT_FALSE(Bin2wav8k(clip, QString()));
  EXPECT_FALSE(Bin2wav8k(clip, wave));
  EXPECT_TRUE(log.contains("Bin2wav8k:binaryFilename is nil."));
  EXPECT_TRUE(log.contains("Bin2wav8k:g_saveWaveFilename is nil."));
  EXPECT_TRUE(log.contains("Bin2wav8k binaryFilename filehandle is nil."));
  EXPECT_FALSE(QFile::exists(wave));
}

}  // namespace
