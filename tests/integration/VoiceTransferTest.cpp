#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include "DeviceSessionFixture.h"
#include "Localization.h"
#include "VoiceTransfer.h"
#include "WaveFile.h"

namespace {

const QDate kToday(2024, 2, 15);

sim::Contents Device(const char *firmware = "1.180") {
  sim::Contents contents = sim::GenerateContents(11, kToday);
  contents.firmware = firmware;
  return contents;
}

QByteArray Audio(const sim::Contents &contents, int clip) {
  return sim::ClipAudio(contents.clips[clip], contents.ringFirst, contents.ringLast);
}

// "2024/02/11 05:07 2min" and "2024-02-11_05-07_2_voice.wav" for a simulator clip, worked
// out here from the clip's start and block count rather than by the code under test.
int Minutes(const sim::Clip &clip, const sim::Contents &contents) {
  int blocks = clip.endBlock - clip.startBlock + 1;
  if (blocks < 0) blocks += contents.ringLast - contents.ringFirst;
  return int(blocks * 8.16 / 60.0 + 0.9);
}

class VoiceTransferTest : public DeviceSessionFixture {
 protected:
  explicit VoiceTransferTest(bool realTimer = false) : DeviceSessionFixture(realTimer) {}
  // Up to the voice list and the log history request; then idle, as after a listing.
  void connectAndList() {
    ASSERT_TRUE(tickUntil(TRY_TX_LOG_HISTORY));
    ASSERT_TRUE(WaitFor([&] { return !window.rows(IndexList::Voice).isEmpty(); }));
    session->state().g_serial_port_status = CONNECTED_IDLE;
    session->state().g_read_index_sequence = 0;
    // No dive listing here: the connection ends where the test takes over.
    session->context().operation.fail(Failure::Cancelled, QString());
  }
  // The clip of the selected row, as the window's button asks for it.
  void downloadSelected() {
    const int row = window.selectedRow(IndexList::Voice);
    voice.downloadClip(session->context().lists.items_voice_index_number.value(row),
                       window.outcomes());
  }
  VoiceTransfer voice{*session};
};

TEST_F(VoiceTransferTest, ListShowsClipsOfAMinuteOrMoreFromTheSearchDateInDeviceOrder) {
  const sim::Contents contents = Device();
  plugIn(contents);
  connectAndList();
  QStringList expected;
  for (int clip : {2, 3, 4}) {  // 0 is from 2021, 1 is under a minute
    const sim::Clip &c = contents.clips[clip];
    expected << c.start.toString("yyyy/MM/dd HH:mm ") + QString::number(Minutes(c, contents)) +
                    "min";
  }
  EXPECT_EQ(window.rows(IndexList::Voice), expected);
  EXPECT_EQ(session->context().lists.items_voice_index_number, (QList<int32_t>{3, 4, 5}));
  EXPECT_EQ(window.selectedRow(IndexList::Voice), 0);
  EXPECT_TRUE(window.called("EnableComboBoxVoiceIndex:1"));
  EXPECT_EQ(log.startingWith("data=20211115,").size(), 1u);
  EXPECT_EQ(log.startingWith("data_size=783360,").size(), 1u);

  // A later search date applies at the next index reply.
  session->state().g_index_search_date =
      contents.clips[4].start.date().toString("yyyyMMdd").toInt();
  session->state().g_receive_data_type_is_voice_record = eSERIAL_RX_VOICE_INDEX;
  session->channel().writeString("vi\r\n");
  ASSERT_TRUE(WaitFor([&] { return window.rows(IndexList::Voice).size() == 1; }));
  EXPECT_EQ(session->context().lists.items_voice_index_number, QList<int32_t>{5});
}

TEST_F(VoiceTransferTest, AcknowledgesEvery2040BytesAndCarriesTheRemainder) {
  sim::Options silent;
  silent.stallAfterBytes = 0;  // the device sends nothing of the clip itself
  plugIn(Device(), silent);
  connectAndList();
  downloadSelected();
  ASSERT_TRUE(WaitFor([&] { return wireCount("vh02") == 1; }));
  session->state().g_voice_unacked_size = 100;
  QByteArray chunk(4096, '\0');
  session->context().hooks.voiceData(chunk.data(), size_t(chunk.size()));
  ASSERT_TRUE(WaitFor([&] { return wireCount("vx") == 2; }));
  EXPECT_EQ(session->state().g_voice_unacked_size, 116);
  EXPECT_EQ(session->state().g_voice_received_size, 4096);
  EXPECT_EQ(session->state().g_voice_idle_ticks, 0);
  EXPECT_TRUE(log.contains("00004096/01175040 : 00004196"));
}

TEST_F(VoiceTransferTest, ADownloadOutsideIdleIsRefusedAndSendsNothing) {
  plugIn(Device());
  connectAndList();
  session->state().g_serial_port_status = RX_LOG_HISTORY;
  window.clear();
  downloadSelected();
  ASSERT_TRUE(WaitFor([&] { return window.lastOutcome().has_value(); }));
  EXPECT_EQ(window.lastOutcome()->failure, Failure::Busy);
  EXPECT_EQ(session->state().g_receive_data_type_is_voice_record, eSERIAL_RX_VOICE_INDEX);
  EXPECT_EQ(session->state().g_voice_download_active, 0);
  QThread::msleep(100);
  EXPECT_EQ(wire().size(), 4);  // #kind, #detail, #gser, vi
}

TEST_F(VoiceTransferTest, SuccessAfterOneRetryResetsTheCountAndKeepsTheLevel) {
  const sim::Contents contents = Device();
  const QByteArray audio = Audio(contents, 2);
  sim::Options options;
  options.stallAfterBytes = audio.size() - 1000;
  options.stallResumeMs = 400;
  plugIn(contents, options);
  connectAndList();
  SessionState &state = session->state();

  downloadSelected();
  ASSERT_TRUE(WaitFor([&] { return state.g_voice_received_size == audio.size() - 1000; }));
  stall();  // before the device resumes: the short tail is retried
  ASSERT_TRUE(waitForState(TRY_TX_VOICE_RETRY));
  EXPECT_EQ(wire().last(), "#cdcwait 5");
  session->timer2Call();  // fetches the clip again from its first byte
  ASSERT_TRUE(WaitFor([&] { return state.g_voice_received_size == audio.size(); }));
  session->timer1Call();
  EXPECT_EQ(state.g_voice_retry_count, 0);
  EXPECT_EQ(state.g_cdcwait_level, 1);
  EXPECT_EQ(wireCount("vh02"), 2);
  const sim::Clip &clip = contents.clips[2];
  const QString wave = paths().g_voice_folder_path + "/" +
                       clip.start.toString("yyyy-MM-dd_HH-mm_") +
                       QString::number(Minutes(clip, contents)) + "_voice.wav";
  EXPECT_EQ(ReadFile(wave).mid(44), audio);
}

TEST_F(VoiceTransferTest, HangUpMidClipFailsWithoutAWave) {
  sim::Options options;
  options.hangupAfterBytes = 50000;
  plugIn(Device(), options);
  connectAndList();
  downloadSelected();
  SessionState &state = session->state();
  ASSERT_TRUE(WaitFor([&] { return !state.readThreadRunning; }));
  EXPECT_EQ(state.g_voice_received_size, 50000);
  stall();
  ASSERT_TRUE(WaitFor([&] { return window.called("outcome:" + Localized("recive_fail")); }));
  EXPECT_EQ(state.g_voice_download_active, 0);
  EXPECT_TRUE(QDir(paths().g_voice_folder_path).isEmpty());
  EXPECT_EQ(QFileInfo(paths().g_temp_voice_file_path).size(), 50000);
}

// Whole clips with the real 0.1 s supervision timer, in both transfer modes.
class WholeClipTest : public VoiceTransferTest, public ::testing::WithParamInterface<const char *> {
 protected:
  WholeClipTest() : VoiceTransferTest(true) {}
};

TEST_P(WholeClipTest, ClipBecomesItsWaveFile) {
  const sim::Contents contents = Device(GetParam());
  const bool acknowledged = QByteArray(GetParam()) >= "1.175";
  plugIn(contents);
  connectAndList();
  const sim::Clip &clip = contents.clips[3];  // across the hole
  const QString name = clip.start.toString("yyyy-MM-dd_HH-mm_") +
                       QString::number(Minutes(clip, contents)) + "_voice.wav";
  const QString wave = paths().g_voice_folder_path + "/" + name;
  WriteFile(wave, "an older download of the same clip");

  window.selectRow(IndexList::Voice, 1);
  downloadSelected();
  ASSERT_TRUE(WaitFor(
      [&] { return window.called("outcome:" + Localized("download_complete") + name); }, 30000));
  const QByteArray audio = Audio(contents, 3);
  const QByteArray written = ReadFile(wave);
  ASSERT_EQ(written.size(), 44 + audio.size());
  EXPECT_EQ(written.left(44), WaveHeader(uint64_t(audio.size())));
  EXPECT_TRUE(written.mid(44) == audio);
  EXPECT_FALSE(QFile::exists(paths().g_temp_voice_file_path));
  EXPECT_EQ(wireCount(acknowledged ? "vh03" : "vr03"), 1);
  EXPECT_EQ(wireCount("vx"), acknowledged ? audio.size() / 2040 : 0);
  EXPECT_EQ(session->state().g_voice_download_active, 0);
  EXPECT_TRUE(window.called("EnableButtonDownloadVoice:1"));
}

INSTANTIATE_TEST_SUITE_P(Firmware, WholeClipTest, ::testing::Values("1.180", "1.170"));

}  // namespace
