#include <gtest/gtest.h>

#include <QBuffer>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtEndian>
#include <memory>

#include "ClipPlayer.h"
#include "Localization.h"
#include "PlayerBar.h"
#include "TestSupport.h"
#include "WaveFile.h"
#include "WavePcm.h"

namespace {

// The WAV file the clip writer makes of sound whose bytes vary, so that a read from a wrong
// offset shows.
QByteArray Wave(int samples) {
  QByteArray audio(samples * 2, '\0');
  for (int i = 0; i < audio.size(); ++i) audio[i] = char(i * 7);
  return WaveHeader(audio.size()) + audio;
}

WavePcm Read(QByteArray bytes) {
  QBuffer in(&bytes);
  in.open(QIODevice::ReadOnly);
  return ReadWavePcm(in);
}

TEST(PlaybackDecode, ReadsTheSavedClipEveryCutOfItAndNoMalformedHeader) {
  const QByteArray wave = Wave(8000), audio = wave.mid(44);
  const WavePcm whole = Read(wave);
  ASSERT_TRUE(whole.ok());
  EXPECT_EQ(whole.pcm, audio);
  EXPECT_EQ(whole.durationMs(), 1000);
  // A download cut short: no header is a WAV, and a cut data chunk plays in whole frames.
  for (int n : {0, 11, 12, 20, 35, 43, 44, 45, 1001, 16043, 16044}) {
    const WavePcm cut = Read(wave.left(n));
    EXPECT_EQ(cut.error, n < 44 ? WaveError::NotWave : WaveError::None) << n;
    EXPECT_EQ(cut.pcm, audio.left((qMax(n, 44) - 44) & ~1)) << n;
    EXPECT_EQ(cut.truncated, n >= 44 && n < wave.size()) << n;
  }
  // A chunk the writer does not write is passed over, its pad byte too.
  EXPECT_EQ(Read(QByteArray(wave).insert(36, QByteArray("LIST\3\0\0\0abc\0", 12))).pcm, audio);

  const auto patched = [&](int at, const QByteArray &bytes) {
    return Read(wave.left(244).replace(at, bytes.size(), bytes));
  };
  EXPECT_EQ(patched(8, "WAVX").error, WaveError::NotWave);
  EXPECT_EQ(patched(16, QByteArray("\x08\x00\x00\x00", 4)).error, WaveError::NotWave);
  EXPECT_EQ(patched(16, "\xff\xff\xff\xff").error, WaveError::NotWave);  // past the end
  EXPECT_EQ(patched(12, "data").error, WaveError::NotWave);              // sound before its format
  EXPECT_EQ(patched(40, "\xff\xff\xff\xff").pcm.size(), 200);  // more announced than there is
}

// The writer's 200 bytes of sound under another format: the tag, channels, rate and bits
// of a 16-byte format chunk, or the extensible format's 40 bytes naming the tag inside.
WavePcm Formatted(quint16 tag, quint16 channels, quint32 rate, quint16 bits,
                  bool extensible = false) {
  QByteArray format(extensible ? 40 : 16, '\0');
  qToLittleEndian(extensible ? quint16(0xFFFE) : tag, format.data());
  qToLittleEndian(channels, format.data() + 2);
  qToLittleEndian(rate, format.data() + 4);
  qToLittleEndian(bits, format.data() + 14);
  if (extensible) qToLittleEndian(tag, format.data() + 24);
  QByteArray wave = Wave(100).replace(16, 20, QByteArray(QByteArray(4, '\0') + format));
  qToLittleEndian(quint32(format.size()), wave.data() + 16);
  return Read(wave);
}

// What the output takes as it is plays in whole frames; anything else is told by its format,
// in the diver's language.
TEST(PlaybackDecode, PlaysWhatTheOutputTakesAndNamesTheFormatsItDoesNot) {
  const struct {
    WavePcm wave;
    WaveSamples samples;
    qint64 pcm;
  } playable[] = {{Formatted(1, 1, 8000, 8), WaveSamples::Unsigned8, 200},
                  {Formatted(1, 2, 44100, 16), WaveSamples::Signed16, 200},
                  {Formatted(1, 8, 384000, 32), WaveSamples::Signed32, 192},
                  {Formatted(3, 1, 1000, 32, true), WaveSamples::Float32, 200}};
  for (const auto &[wave, samples, pcm] : playable) {
    EXPECT_TRUE(wave.ok()) << wave.format.tag << " " << wave.format.bitsPerSample;
    EXPECT_EQ(wave.samples, samples);
    EXPECT_EQ(wave.pcm.size(), pcm);
  }
  const struct {
    WavePcm wave;
    const char *english;
  } refused[] = {
      {Formatted(1, 2, 44100, 24), "24-bit PCM, stereo, 44.1 kHz"},
      {Formatted(3, 1, 8000, 64), "64-bit floating point, mono, 8 kHz"},
      {Formatted(0x55, 1, 22050, 0, true), "compressed (format 0x0055), mono, 22.05 kHz"},
      {Formatted(1, 9, 8000, 16), "16-bit PCM, 9 channels, 8 kHz"},
      {Formatted(1, 0, 8000, 16), "16-bit PCM, 0 channels, 8 kHz"},
      {Formatted(1, 1, 999, 16), "16-bit PCM, mono, 0.999 kHz"},
      {Formatted(1, 1, 384001, 16), "16-bit PCM, mono, 384.001 kHz"}};
  for (const auto &[wave, english] : refused) {
    EXPECT_EQ(wave.error, WaveError::Unplayable) << english;
    EXPECT_EQ(DescribeWaveFormat(wave.format), english);
  }
  InstallStringTables(QLocale(QLocale::Japanese));
  EXPECT_EQ(DescribeWaveFormat(refused[0].wave.format),
            QStringLiteral("24 ビット PCM、ステレオ、44.1 kHz"));
  InstallStringTables(QLocale(QLocale::English));
}

// What cannot play is said before the output is asked for; a clip plays to its end by
// itself, stops midway, and may lose its player while playing.
TEST(Playback, SaysWhatCannotPlayAndPlaysAClipToItsEndOrStopsIt) {
  QTemporaryDir dir;
  const QString clip = dir.filePath("2023-04-05_13-07_1_voice.wav");
  WriteFile(clip, Wave(8000));
  PlayerBar bar;
  ClipPlayer &player = bar.player();
  auto *button = bar.findChild<QPushButton *>("playButton");
  bar.setClip(clip, "13:07");
  EXPECT_EQ(bar.findChild<QLabel *>("playTime")->text(), "0:00 / 0:01");
  EXPECT_EQ(button->isEnabled(), ClipPlayer::outputAvailable());
  EXPECT_EQ(button->toolTip(),
            ClipPlayer::outputAvailable() ? QString() : Localized("player_no_output"));
  WriteFile(dir.filePath("notes.wav"), "not a sound clip");
  EXPECT_FALSE(player.play(dir.filePath("notes.wav")));
  EXPECT_EQ(player.error(), Localized("player_not_wave"));
  QByteArray stereo = Wave(100);
  stereo[22] = 2, stereo[34] = 24;
  WriteFile(dir.filePath("stereo.wav"), stereo);
  EXPECT_FALSE(player.play(dir.filePath("stereo.wav")));
  EXPECT_EQ(player.error(), "Not a clip this program can play: 24-bit PCM, stereo, 8 kHz");

  if (!ClipPlayer::outputAvailable()) GTEST_SKIP() << "no audio output: start a sound server";
  button->click();
  ASSERT_TRUE(player.playing()) << qPrintable(player.error());
  EXPECT_EQ(button->text(), Localized("player_stop"));
  EXPECT_TRUE(WaitFor([&] { return !player.playing(); }, 20000));
  EXPECT_EQ(player.positionMs(), 0);
  EXPECT_TRUE(player.error().isEmpty()) << qPrintable(player.error());
  EXPECT_EQ(button->text(), Localized("player_play"));

  ASSERT_TRUE(player.play(clip));
  EXPECT_TRUE(WaitFor([&] { return player.positionMs() > 0; }, 20000));
  player.stop();
  EXPECT_FALSE(player.playing());
  auto other = std::make_unique<ClipPlayer>();
  ASSERT_TRUE(other->play(clip));
  other.reset();
}

}  // namespace
