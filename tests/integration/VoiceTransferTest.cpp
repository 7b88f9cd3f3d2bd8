// Clips from the simulator over a real pty: the list, the "vx" pacing, stalls, hang-ups and the WAV
// files, byte for byte.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "DeviceSessionFixture.h"
#include "Localization.h"
#include "VoiceTransfer.h"
#include "WaveFile.h"

namespace {

sim::Contents Device(const char *firmware = "1.180") {
  sim::Contents contents = sim::GenerateContents(11, QDate(2024, 2, 15));
  contents.firmware = firmware;
  return contents;
}

QByteArray Audio(const sim::Contents &contents, int clip) {
  return sim::ClipAudio(contents.clips[clip], contents.ringFirst, contents.ringLast);
}

class VoiceTransferTest : public DeviceSessionFixture {
 protected:
  explicit VoiceTransferTest(bool realTimer = false) : DeviceSessionFixture(realTimer) {}
  // Up to the voice list; then idle, as after a listing, with no dive listing.
  void connectAndList(const sim::Contents &contents, sim::Options options = {}) {
    plugIn(contents, options);
    ASSERT_TRUE(tickUntil(TRY_TX_LOG_HISTORY));
    ASSERT_TRUE(WaitFor([&] { return !published().clips.isEmpty(); }));
    session->state().phase = CONNECTED_IDLE;
    session->state().indexSequence = 0;
    session->context().operation.fail(Failure::Cancelled, QString());
  }
  // The clip of a row of the list, as the window's button asks for it.
  void downloadRow(int row = 0) {
    voice.downloadClip(published().clips.value(row).number, watch.outcomes());
  }
  VoiceTransfer voice{*session, std::move(clipTimer)};
  SessionState &state = session->state();
};

// Listed: the clips of a minute or more from the period's first day, in device order. Every
// whole window of 2040 clip bytes is acknowledged at once, one exactly full included; the
// rest is carried to the next read. A clip cancelled mid-way is ended on the device ("#cdcwait")
// once the line is quiet, so its tail cannot run into the next request; a device that never
// answers that is given up at the reply deadline, not waited for.
TEST_F(VoiceTransferTest, ListsThePeriodsClipsThenAcknowledgesEvery2040BytesCarryingTheRest) {
  sim::Options silent;
  silent.stallAfterBytes = 0;  // the device sends nothing of the clip itself
  silent.silentCommands = {"cdcwait"};
  int64_t ahead = 0;  // the session's clock, moved on by hand past the reply deadline
  session->context().clockMs = [&ahead] { return SteadyClockMs() + ahead; };
  state.searchFromDate = 20240211;  // the period's first day, the day of the first clip shown
  connectAndList(Device(), silent);
  // Clip 0 is from 2021, clip 1 under a minute.
  EXPECT_EQ(
      RowTexts(published().clips),
      QStringList({"2024/02/11 04:06 2min", "2024/02/13 04:53 7min", "2024/02/14 07:05 2min"}));
  EXPECT_EQ(RowNumbers(published().clips), (QList<int32_t>{3, 4, 5}));
  EXPECT_EQ(published().clips[1].bytes, Audio(Device(), 3).size());
  downloadRow();
  ASSERT_TRUE(WaitFor([&] { return wireCount("vh02") == 1; }));
  state.clipUnacked = 100;
  QByteArray chunk(4096, '\0');
  session->context().hooks.voiceData(chunk.data(), 1940);
  ASSERT_TRUE(WaitFor([&] { return wireCount("vx") == 1; }));
  EXPECT_EQ(state.clipUnacked, 0);
  session->context().hooks.voiceData(chunk.data(), size_t(chunk.size()));
  ASSERT_TRUE(WaitFor([&] { return wireCount("vx") == 3; }));
  EXPECT_EQ(state.clipUnacked, 16);
  EXPECT_EQ(state.clipReceived, 1940 + 4096);
  EXPECT_EQ(state.clipIdleTicks, 0);
  session->cancel();
  EXPECT_TRUE(WaitFor(
      [&] { return watch.lastOutcome && watch.lastOutcome->failure == Failure::Cancelled; }));
  ASSERT_TRUE(WaitFor([&] { return wire().last().startsWith("#cdcwait"); }));
  EXPECT_EQ(QFileInfo(paths().clipInProgressFile).size(), 1940 + 4096);  // nothing held back
  ahead += kReplyDeadlineMs;
  session->tick();
  EXPECT_EQ(state.phase, DISCONNECTED);
}

// A clip that stalls for good just short of its end: 50 quiet ticks are not yet a stall, the 51st
// is; the clip is fetched twice more, each time with a longer wait, then given up.
TEST_F(VoiceTransferTest, ShortTailIsRetriedTwiceThenGivenUp) {
  const sim::Contents contents = Device();
  sim::Options options;
  options.stallAfterBytes = Audio(contents, 2).size() - 10;
  connectAndList(contents, options);
  downloadRow();
  for (const QByteArray level : {"#cdcwait 5", "#cdcwait 8", ""}) {
    ASSERT_TRUE(WaitFor([&] { return state.clipReceived == options.stallAfterBytes; }));
    for (int tick = 0; tick < 50; ++tick) timer1->tick();
    EXPECT_TRUE(timer1->running);
    EXPECT_EQ(published().progress.bytesDone, options.stallAfterBytes);
    EXPECT_EQ(published().progress.percent(), 99);
    timer1->tick();
    if (level.isEmpty()) break;
    ASSERT_TRUE(waitForState(TRY_TX_VOICE_RETRY));
    EXPECT_EQ(wire().last(), level);
    session->tick();                        // the retry tick asks for the clip again
    EXPECT_TRUE(published().clipUnderWay);  // closing the window would cut the clip
  }
  ASSERT_TRUE(WaitFor([&] { return watch.lastOutcome.has_value(); }));
  EXPECT_EQ(watch.lastOutcome->sentence, Localized("retry_recive_fail"));
  EXPECT_EQ(wireCount("vh02"), 3);
  session->tick();
  EXPECT_FALSE(published().clipUnderWay);

  // At the table's last level a stall still retries, at that level.
  state.cdcwaitLevel = kHighestCdcwaitLevel;
  downloadRow();
  ASSERT_TRUE(WaitFor([&] {  // the fourth request resets the count before it goes out
    return wireCount("vh02") == 4 && state.clipReceived == options.stallAfterBytes;
  }));
  stall();
  EXPECT_TRUE(waitForState(TRY_TX_VOICE_RETRY));
  EXPECT_EQ(state.cdcwaitLevel, kHighestCdcwaitLevel);
}

// A clip cut off by a hang-up or a full disk fails with no WAV file. Every byte that arrived
// is in the temporary file, none held back, and the count stops where that file ends.
TEST_F(VoiceTransferTest, HangUpOrFullDiskMidClipFailsKeepingEveryByteThatArrived) {
  for (const bool fullDisk : {false, true}) {
    sim::Options options;
    if (!fullDisk) options.hangupAfterBytes = 50000;
    const qint64 kept = fullDisk ? 30000 : 50000;
    connectAndList(Device(), options);
    std::optional<FileSizeLimit> disk;
    if (fullDisk) disk.emplace(kept);
    watch.clear();
    downloadRow();
    ASSERT_TRUE(WaitFor([&] {
      return fullDisk ? QFileInfo(paths().clipInProgressFile).size() == kept
                      : !state.readThreadRunning;
    }));
    stall();
    ASSERT_TRUE(WaitFor([&] { return watch.lastOutcome.has_value(); }));
    EXPECT_EQ(watch.lastOutcome->sentence, Localized("recive_fail")) << fullDisk;
    EXPECT_EQ(state.clipDownloadActive, 0);
    EXPECT_EQ(state.clipReceived, kept);
    EXPECT_EQ(QFileInfo(paths().clipInProgressFile).size(), kept);
    EXPECT_TRUE(QDir(paths().voiceFolder).isEmpty());
  }
}

// A whole clip with the real 0.1 s supervision timer, from firmware older than the "vx" pacing: the
// clip ends on block 1024, just past the ring's hole, and replaces an older download of itself.
class WholeClipTest : public VoiceTransferTest {
 protected:
  WholeClipTest() : VoiceTransferTest(true) {}
};

TEST_F(WholeClipTest, ClipAcrossTheHoleBecomesItsWaveFile) {
  sim::Contents contents = Device("1.170");
  contents.clips[3].endBlock = 0x400;
  connectAndList(contents);
  const QString name = "2024-02-13_04-53_5_voice.wav", wave = paths().voiceFolder + "/" + name;
  WriteFile(wave, "an older download of the same clip");

  // A clean clip asks the device for a shorter wait, and its answer does not fetch it again.
  state.cdcwaitLevel = 2;
  downloadRow(1);
  ASSERT_TRUE(WaitFor([&] { return wire().last() == "#cdcwait 5"; }, 120000));
  ASSERT_TRUE(waitForState(CONNECTED_IDLE));
  session->tick();
  ASSERT_TRUE(WaitFor([&] { return watch.lastOutcome.has_value(); }));
  EXPECT_EQ(watch.lastOutcome->sentence, Localized("download_complete") + name);
  const QByteArray audio = Audio(contents, 3);
  EXPECT_EQ(ReadFile(wave), WaveHeader(uint64_t(audio.size())) + audio);
  EXPECT_FALSE(QFile::exists(paths().clipInProgressFile));
  EXPECT_EQ(wireCount("vr03"), 1);
  EXPECT_EQ(wireCount("vx"), 0);
  EXPECT_EQ(state.clipDownloadActive, 0);
  EXPECT_EQ(published().phase, DevicePhase::Idle);
}

}  // namespace
