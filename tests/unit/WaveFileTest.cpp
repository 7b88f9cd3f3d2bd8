#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include "SystemLog.h"
#include "TestSupport.h"
#include "WaveFile.h"

namespace {

// Clip bytes as the device sends them: 16-bit little-endian samples, every byte value.
QByteArray Audio(int bytes) {
  QByteArray audio(bytes, '\0');
  for (int i = 0; i < bytes; ++i) audio[i] = char(i * 7);
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
  EXPECT_EQ(WaveHeader(3264000).toHex(' '),
            "52 49 46 46 24 ce 31 00 57 41 56 45 66 6d 74 20 "  // "RIFF", L + 36, "WAVEfmt "
            "10 00 00 00 01 00 01 00 40 1f 00 00 80 3e 00 00 "  // 16, PCM, mono, 8000/s, 16000 B/s
            "02 00 10 00 64 61 74 61 00 ce 31 00");             // 2 B a frame, 16 bits, "data", L
  // Lengths are cut to 32 bits.
  EXPECT_EQ(qFromLittleEndian<uint32_t>(WaveHeader(0x100000000ull - 10).constData() + 4), 26u);
}

// A clip that cannot be saved is never lost: the clip file stays, and so does an older WAV of
// that name, until a save succeeds; then the clip file goes.
TEST(Bin2wav8kTest, ClipBecomesAWaveOnlyWhenItCanBeSavedWhole) {
  QTemporaryDir dir;
  const QString clip = dir.filePath("tempVoiceData.bin");
  const QString wave = dir.filePath("2023-04-05_13-07_2_voice.wav");
  WriteFile(clip, Audio(16000));
  WriteFile(wave, "an older download of the same name");
  LogCapture quiet;
  {
    FileSizeLimit limit(8000);  // the disk fills in the middle of the WAV
    EXPECT_FALSE(Bin2wav8k(clip, wave));
  }
  EXPECT_EQ(ReadFile(wave), "an older download of the same name");
  EXPECT_EQ(ReadFile(clip), Audio(16000));
  EXPECT_EQ(QDir(dir.path()).count(), 4u);  // ".", "..", the clip and the WAV: no temporary file

  ASSERT_TRUE(Bin2wav8k(clip, wave));
  EXPECT_EQ(ReadFile(wave), WaveHeader(16000) + Audio(16000));
  EXPECT_FALSE(QFile::exists(clip));
  EXPECT_FALSE(Bin2wav8k(clip, wave));  // no clip
  EXPECT_EQ(ReadFile(wave), WaveHeader(16000) + Audio(16000));
}

}  // namespace
