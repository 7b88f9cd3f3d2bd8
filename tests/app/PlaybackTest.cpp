#include <gtest/gtest.h>

#include <QBuffer>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <memory>

#include "ClipPlayer.h"
#include "Localization.h"
#include "PlayerBar.h"
#include "TestSupport.h"
#include "WaveFile.h"
#include "WavePcm.h"

namespace {

// Sound whose bytes vary, so a read from a wrong offset shows, and the WAV file the clip
// writer makes of it.
QByteArray Ramp(int samples) {
  QByteArray audio(samples * 2, '\0');
  for (int i = 0; i < audio.size(); ++i) audio[i] = char(i * 7);
  return audio;
}
QByteArray Wave(const QByteArray &audio) {
  return WaveHeader(audio.size()) + audio;
}

WavePcm Read(const QByteArray &bytes) {
  QBuffer in;
  in.setData(bytes);
  in.open(QIODevice::ReadOnly);
  return ReadWavePcm(in);
}

TEST(PlaybackDecode, ReadsTheSavedClipAndEveryCutOfIt) {
  const QByteArray audio = Ramp(8000), wave = Wave(audio);
  const WavePcm whole = Read(wave);
  ASSERT_TRUE(whole.ok());
  EXPECT_EQ(whole.sampleRate, 8000);
  EXPECT_EQ(whole.channels, 1);
  EXPECT_EQ(whole.pcm, audio);
  EXPECT_EQ(whole.durationMs(), 1000);
  // A download cut short: no header is a WAV, and a cut data chunk plays in whole frames.
  for (int n : {0, 4, 11, 12, 20, 35, 43, 44, 45, 1001, 16043, 16044}) {
    const WavePcm cut = Read(wave.left(n));
    EXPECT_EQ(cut.error, n < 44 ? WaveError::NotWave : WaveError::None) << n;
    EXPECT_EQ(cut.pcm, audio.left((qMax(n, 44) - 44) & ~1)) << n;
    EXPECT_EQ(cut.truncated, n >= 44 && n < wave.size()) << n;
  }
  // A chunk the writer does not write is passed over, its pad byte too.
  EXPECT_EQ(Read(QByteArray(wave).insert(36, QByteArray("LIST\3\0\0\0abc\0", 12))).pcm, audio);
}

TEST(PlaybackDecode, MalformedHeadersAreErrors) {
  const QByteArray wave = Wave(Ramp(100));
  const auto patched = [&](int at, const QByteArray &bytes) {
    return QByteArray(wave).replace(at, bytes.size(), bytes);
  };
  EXPECT_EQ(Read(patched(8, "WAVX")).error, WaveError::NotWave);
  EXPECT_EQ(Read(patched(20, QByteArray("\x03\x00", 2))).error, WaveError::NotPcm16);  // float
  EXPECT_EQ(Read(patched(34, QByteArray("\x08\x00", 2))).error, WaveError::NotPcm16);  // 8 bits
  EXPECT_EQ(Read(patched(22, QByteArray("\x00\x00", 2))).error, WaveError::NotPcm16);  // no channel
  EXPECT_EQ(Read(patched(16, QByteArray("\x08\x00\x00\x00", 4))).error, WaveError::NotWave);
  EXPECT_EQ(Read(patched(16, "\xff\xff\xff\xff")).error, WaveError::NotWave);  // past the end
  EXPECT_EQ(Read(patched(12, "data")).error, WaveError::NotWave);  // sound before its format
  const WavePcm huge = Read(patched(40, "\xff\xff\xff\xff"));
  EXPECT_TRUE(huge.truncated);
  EXPECT_EQ(huge.pcm.size(), 200);
}

class Playback : public ::testing::Test {
 protected:
  QTemporaryDir dir;
  QString clip = dir.filePath("2023-04-05_13-07_1_voice.wav");
  void SetUp() override { WriteFile(clip, Wave(Ramp(8000))); }
};

TEST_F(Playback, WhatCannotPlayIsSaid) {
  PlayerBar bar;
  auto *button = bar.findChild<QPushButton *>("playButton");
  EXPECT_FALSE(button->isEnabled());
  bar.setClip(clip, "13:07");
  EXPECT_EQ(bar.findChild<QLabel *>("playTime")->text(), "0:00 / 0:01");
  EXPECT_EQ(button->isEnabled(), ClipPlayer::outputAvailable());
  EXPECT_EQ(button->toolTip(),
            ClipPlayer::outputAvailable() ? QString() : Localized("player_no_output"));
  // Files are read before the output is asked for.
  EXPECT_FALSE(bar.player().play(dir.filePath("gone.wav")));
  EXPECT_TRUE(bar.player().error().startsWith(Localized("player_cannot_read").section('%', 0, 0)));
  WriteFile(dir.filePath("notes.wav"), "not a sound clip");
  EXPECT_FALSE(bar.player().play(dir.filePath("notes.wav")));
  EXPECT_EQ(bar.player().error(), Localized("player_not_wave"));
}

TEST_F(Playback, ClipEndsByItselfAndStopsMidway) {
  if (!ClipPlayer::outputAvailable()) GTEST_SKIP() << "no audio output: start a sound server";
  PlayerBar bar;
  bar.setClip(clip, "13:07");
  ClipPlayer &player = bar.player();
  auto *button = bar.findChild<QPushButton *>("playButton");
  button->click();
  ASSERT_TRUE(player.playing()) << qPrintable(player.error());
  EXPECT_EQ(player.durationMs(), 1000);
  EXPECT_EQ(button->text(), Localized("player_stop"));
  EXPECT_TRUE(WaitFor([&] { return !player.playing(); }, 20000));
  EXPECT_EQ(player.positionMs(), 0);
  EXPECT_TRUE(player.error().isEmpty()) << qPrintable(player.error());
  EXPECT_EQ(button->text(), Localized("player_play"));

  ASSERT_TRUE(player.play(clip));
  EXPECT_TRUE(WaitFor([&] { return player.positionMs() > 0; }, 20000));
  player.seek(500);
  player.stop();
  EXPECT_FALSE(player.playing());
  auto other = std::make_unique<ClipPlayer>();
  ASSERT_TRUE(other->play(clip));
  other.reset();  // gone while playing
  WaitFor([] { return false; }, 300);
}

}  // namespace
