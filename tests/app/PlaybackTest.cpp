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
  EXPECT_EQ(patched(20, QByteArray("\x03\x00", 2)).error, WaveError::NotPcm16);  // float
  EXPECT_EQ(patched(34, QByteArray("\x08\x00", 2)).error, WaveError::NotPcm16);  // 8 bits
  EXPECT_EQ(patched(22, QByteArray("\x00\x00", 2)).error, WaveError::NotPcm16);  // no channel
  EXPECT_EQ(patched(16, QByteArray("\x08\x00\x00\x00", 4)).error, WaveError::NotWave);
  EXPECT_EQ(patched(16, "\xff\xff\xff\xff").error, WaveError::NotWave);  // past the end
  EXPECT_EQ(patched(12, "data").error, WaveError::NotWave);              // sound before its format
  EXPECT_EQ(patched(40, "\xff\xff\xff\xff").pcm.size(), 200);  // more announced than there is
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
