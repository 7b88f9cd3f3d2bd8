#include <gtest/gtest.h>

#include <QThread>

#include "Localization.h"
#include "RecordingWindow.h"
#include "Session.h"
#include "SimulatedDevice.h"
#include "SystemLog.h"

namespace {

sim::Contents Device() {
  return sim::GenerateContents(3, QDate(2024, 2, 15));
}

class SessionTest : public ::testing::Test {
 protected:
  void plugIn(sim::Contents contents = Device(), sim::Options options = {}) {
    session.setConnectionHandler(window.outcomes());
    device = std::make_unique<SimulatedDevice>(std::move(contents), options);
    ASSERT_EQ(session.openSerialPort(device->slavePath(), 9600), std::nullopt);
  }
  QList<QByteArray> wire() const { return device->device().commands(); }
  bool waitForWire(int count) {
    return WaitFor([&] { return wire().size() >= count; });
  }
  bool waitForState(int32_t status) {
    return WaitFor([&] { return state.g_serial_port_status == status; });
  }
  // Ticks through the identity handshake to where the voice index is asked for.
  void identify() {
    session.timer2Call();
    ASSERT_TRUE(waitForState(TRY_CONNECT_KIND_DONE));
    session.timer2Call();
    session.timer2Call();
    ASSERT_TRUE(waitForState(TRY_CONNECT_DETAIL_DONE));
    session.timer2Call();
    session.timer2Call();
    ASSERT_TRUE(waitForState(TRY_TX_VOICE_INDEX));
  }

  LogCapture log;
  RecordingWindow window;
  ManualTimer *timer1 = new ManualTimer;
  std::unique_ptr<SimulatedDevice> device;
  Session session{window, std::unique_ptr<SupervisionTimer>(timer1)};
  SessionState &state = session.state();
};

TEST_F(SessionTest, HandshakeTakesOneStepATickWithTheBytesOnTheWire) {
  plugIn();
  EXPECT_TRUE(window.called("setText:label_poweron_message=" + Localized("open_serial_port")));
  EXPECT_TRUE(log.contains("serial port open:" + device->slavePath().toStdString()));
  EXPECT_EQ(state.g_serial_port_status, TRY_CONNECT_TX_KIND);

  session.timer2Call();
  EXPECT_EQ(state.g_read_index_sequence, 1);
  ASSERT_TRUE(waitForState(TRY_CONNECT_KIND_DONE));
  EXPECT_EQ(wire(), QList<QByteArray>{"#kind"});
  EXPECT_EQ(window.text(Outlet::label_type), "QM482");
  EXPECT_TRUE(log.contains("writeString:#kind\r\n"));

  // The detail request goes out on the second tick after the model reply, not the first.
  session.timer2Call();
  EXPECT_EQ(state.g_serial_port_status, TRY_CONNECT_TX_DETAIL);
  session.timer2Call();
  ASSERT_TRUE(waitForState(TRY_CONNECT_DETAIL_DONE));
  EXPECT_EQ(wire(), (QList<QByteArray>{"#kind", "#detail"}));
  EXPECT_EQ(state.g_flow_control_enabled, 1);
  EXPECT_EQ(window.text(Outlet::label_version), "1.180 JPN QM482 2023-10-01 BAT85");

  session.timer2Call();
  EXPECT_EQ(state.g_serial_port_status, TRY_CONNECT_TX_GSER);
  session.timer2Call();
  ASSERT_TRUE(waitForState(TRY_TX_VOICE_INDEX));
  EXPECT_EQ(wire(), (QList<QByteArray>{"#kind", "#detail", "#gser"}));
  EXPECT_EQ(window.text(Outlet::label_serial_number), "SN.28417305");

  session.timer2Call();  // no voice reader here: the state waits in RX_VOICE_INDEX
  EXPECT_EQ(state.g_serial_port_status, RX_VOICE_INDEX);
  EXPECT_EQ(state.g_receive_data_type_is_voice_record, eSERIAL_RX_VOICE_INDEX);
  ASSERT_TRUE(waitForWire(4));
  EXPECT_EQ(wire().last(), "vi");

  // The voice index reply moves the session on to the log history.
  state.g_serial_port_status = TRY_TX_LOG_HISTORY;
  session.timer2Call();
  EXPECT_EQ(state.g_serial_port_status, RX_LOG_HISTORY);
  EXPECT_EQ(state.g_receive_data_type_is_voice_record, eSERIAL_RX_LOG_HISTORY);
  ASSERT_TRUE(waitForWire(5));
  EXPECT_EQ(wire().last(), "lh");
  EXPECT_TRUE(window.called("reloadList:log=0"));
  for (const char *line : {"g_serial_port_status == TRY_CONNECT_RX_KIND.",
                           "g_serial_port_status == TRY_CONNECT_RX_DETAIL.",
                           "g_serial_port_status == TRY_CONNECT_RX_GSER."}) {
    EXPECT_TRUE(log.contains(line)) << line;
  }
}

TEST_F(SessionTest, ModelReplySplitOverTwoReadsDisconnects) {
  sim::Options options;
  options.splitReplies["kind"] = {5};
  options.splitGapMs = 200;
  plugIn(Device(), options);
  session.timer2Call();
  ASSERT_TRUE(waitForState(DISCONNECTED));
  EXPECT_TRUE(WaitFor([&] { return window.called("outcome:" + Localized("target_model_error")); }));
  EXPECT_EQ(window.lastOutcome()->failure, Failure::WrongModel);
  // In DISCONNECTED the tick does nothing; only Reconnect starts again.
  session.timer2Call();
  EXPECT_EQ(state.g_serial_port_status, DISCONNECTED);
  session.Reconnect();
  ASSERT_TRUE(waitForWire(2));
  EXPECT_EQ(wire().last(), "#kind");
}

TEST_F(SessionTest, WithoutAPortNothingIsSentAndTheUserIsTold) {
  session.timer2Call();  // no port: state 0 waits
  EXPECT_EQ(state.g_serial_port_status, TRY_CONNECT_TX_KIND);
  EXPECT_FALSE(session.channel().writeString("vi\r\n"));
  EXPECT_TRUE(log.contains("writeString:serialFileDescripter -1"));
  EXPECT_FALSE(session.channel().writeByte("abcd", 0, 4));
  EXPECT_TRUE(log.contains("writeByte:serialFileDescripter -1"));
  session.Reconnect();
  EXPECT_TRUE(log.contains("Reconnect:serialFileDescriptor -1."));
  EXPECT_EQ(state.g_serial_port_status, TRY_CONNECT_TX_KIND);

  // A request that cannot go out leaves no state waiting for a reply that cannot come.
  state.g_serial_port_status = TRY_CONNECT_TX_DETAIL;
  state.g_read_index_sequence = 1;
  session.timer2Call();
  EXPECT_EQ(state.g_serial_port_status, DISCONNECTED);
  EXPECT_EQ(state.g_read_index_sequence, 0);
  EXPECT_TRUE(window.called("messageBox:Corvamund power is off"));
}

TEST_F(SessionTest, WritesGoOutWholeAndLogAtMost28Characters) {
  plugIn();
  const QString command = "#cdcwait 123456789012345678901234567890\r\n";
  EXPECT_TRUE(session.channel().writeString(command));
  ASSERT_TRUE(waitForWire(1));
  EXPECT_EQ(wire().last(), command.toLatin1().chopped(2));
  EXPECT_TRUE(log.contains("writeString:" + command.left(28).toStdString()));

  EXPECT_TRUE(session.channel().writeByte("#kind\r\n", 0, 7));
  EXPECT_TRUE(log.contains("writeByte:0,7"));
  EXPECT_FALSE(session.channel().writeByte("#kind\r\n", 0, 8));
  EXPECT_TRUE(log.contains("writeByte size error!:0,8 length7"));
  ASSERT_TRUE(waitForWire(2));
  EXPECT_EQ(wire().last(), "#kind");
}

TEST_F(SessionTest, OpeningAgainClosesTheOldPortAndWaitsForItsThread) {
  plugIn();
  SimulatedDevice second(Device());
  ASSERT_EQ(session.openSerialPort(second.slavePath(), 9600), std::nullopt);
  EXPECT_EQ(log.startingWith("read error!").size(), 1u);
  EXPECT_TRUE(state.readThreadRunning);
  session.timer2Call();
  ASSERT_TRUE(WaitFor([&] { return second.device().commands().size() == 1; }));
  EXPECT_TRUE(wire().isEmpty());
  ASSERT_TRUE(waitForState(TRY_CONNECT_KIND_DONE));
}

TEST_F(SessionTest, PortsThatCannotBeOpenedLeaveNothingOpen) {
  SimulatedDevice device(Device());
  EXPECT_EQ(session.openSerialPort(device.slavePath(), 12345), "Error: Baud Rate out of bounds");
  EXPECT_FALSE(session.channel().isOpen());
  EXPECT_FALSE(state.readThreadRunning);
  EXPECT_TRUE(window.called("setText:label_poweron_message=" + Localized("initial_error")));
  EXPECT_EQ(log.startingWith("serial port open error:Error: Baud Rate out of bounds no:").size(),
            1u);
  EXPECT_EQ(session.openSerialPort("/dev/no-such-port", 9600), "Error: couldn't open serial port");
  EXPECT_FALSE(session.channel().isOpen());
}

TEST_F(SessionTest, UnplugMidConnectionEndsItAndAReplugIsIdentifiedAfresh) {
  plugIn();
  identify();
  device.reset();  // the cable is pulled
  ASSERT_TRUE(WaitFor([&] { return !state.readThreadRunning; }));
  EXPECT_FALSE(session.channel().isOpen());
  EXPECT_EQ(log.startingWith("read error! -1").size(), 1u);
  ASSERT_TRUE(WaitFor([&] { return window.lastOutcome().has_value(); }));
  EXPECT_EQ(window.lastOutcome()->failure, Failure::Unplugged);
  EXPECT_EQ(state.g_serial_port_status, DISCONNECTED);

  // Plugged in again: the same steps as the first time, with no restart.
  plugIn();
  EXPECT_EQ(state.g_serial_port_status, TRY_CONNECT_TX_KIND);
  identify();
  EXPECT_EQ(wire(), (QList<QByteArray>{"#kind", "#detail", "#gser"}));
}

TEST_F(SessionTest, ADeviceThatStopsAnsweringEndsTheConnectionAtTheDeadline) {
  sim::Options silent;
  silent.silentCommands = {"gser"};
  int64_t now = 0;
  session.context().clockMs = [&now] { return now; };
  plugIn(Device(), silent);
  session.timer2Call();
  ASSERT_TRUE(waitForState(TRY_CONNECT_KIND_DONE));
  session.timer2Call();
  session.timer2Call();
  ASSERT_TRUE(waitForState(TRY_CONNECT_DETAIL_DONE));
  session.timer2Call();
  session.timer2Call();  // "#gser", never answered
  now += kReplyDeadlineMs - 1;
  session.timer2Call();
  EXPECT_EQ(state.g_serial_port_status, TRY_CONNECT_RX_GSER);
  now += 1;
  session.timer2Call();
  EXPECT_EQ(state.g_serial_port_status, DISCONNECTED);
  ASSERT_TRUE(WaitFor([&] { return window.lastOutcome().has_value(); }));
  EXPECT_EQ(window.lastOutcome()->failure, Failure::NotAnswering);
  EXPECT_EQ(window.lastOutcome()->sentence, Localized("device_not_answering"));
  EXPECT_TRUE(window.called("setEnabled:button_reconnect=1"));  // Reconnect is offered
}

TEST_F(SessionTest, RemovalIsNoticedInIdleAndGatesTheQuitGuard) {
  state.g_serial_port_status = CONNECTED_IDLE;
  state.deviceExist = 1;
  state.g_voice_download_active = 1;
  session.timer2Call();
  EXPECT_TRUE(window.isProcessing());
  state.deviceExist = 0;
  session.timer2Call();
  EXPECT_EQ(state.g_serial_port_status, DISCONNECTED);
  EXPECT_FALSE(window.isProcessing());
  EXPECT_TRUE(window.called("setVisible:label_com_number=1"));
  EXPECT_TRUE(window.called("setText:label_serial_number=SN."));
  EXPECT_TRUE(window.called("setEnabled:button_reconnect=0"));
}

// The supervision of a clip, driven tick by tick; the device answers "#cdcwait".
class SupervisionTest : public SessionTest {
 protected:
  void SetUp() override {
    plugIn();
    state.g_serial_port_status = CONNECTED_IDLE;
    session.context().operation.fail(Failure::Cancelled, QString());
    session.context().operation.begin(Operation::DownloadClip, window.outcomes());
    hooks().MakeWaveFile = [this] {
      ++wavesMade;
      return Outcome{Operation::DownloadClip, Failure::None, QString(), {}};
    };
    hooks().CloseVoiceBinary = [this] { ++closes; };
    hooks().DownloadVoiceData = [this] { ++requests; };
  }
  SessionHooks &hooks() { return session.context().hooks; }
  // A clip of 100000 bytes of which received have arrived.
  void streaming(int32_t received) {
    state.g_receive_data_type_is_voice_record = eSERIAL_RX_VOICE_DATA;
    state.g_voice_data_size = 100000;
    state.g_voice_received_size = received;
    state.g_voice_idle_ticks = 0;
    session.timer1Start();
  }
  void stall() {
    for (int tick = 0; tick < 51; ++tick) session.timer1Call();
  }
  int wavesMade = 0, closes = 0, requests = 0;
};

TEST_F(SupervisionTest, CleanClipLowersTheWaitLevelOneStep) {
  state.g_cdcwait_level = 3;
  streaming(99999);
  session.timer1Call();
  EXPECT_TRUE(window.called("setProgress:99"));
  state.g_voice_received_size = 100000;
  session.timer1Call();
  EXPECT_EQ(wavesMade, 1);
  EXPECT_FALSE(timer1->running);
  EXPECT_EQ(state.g_cdcwait_level, 2);
  ASSERT_TRUE(waitForState(CONNECTED_IDLE));
  EXPECT_EQ(wire(), QList<QByteArray>{"#cdcwait 8"});
  // The receive thread enables the controls just after it has set the state.
  EXPECT_TRUE(WaitFor([&] { return window.called("EnableButtonDownloadLog:1"); }));

  // At level 0 nothing is sent and the controls come back at once.
  state.g_cdcwait_level = 0;
  streaming(100000);
  window.clear();
  session.timer1Call();
  EXPECT_EQ(wire().size(), 1);
  EXPECT_TRUE(window.called("EnableComboBoxVoiceIndex:1"));
}

TEST_F(SupervisionTest, ShortTailIsRetriedTwiceThenGivenUp) {
  streaming(100000 - 2047);
  for (int tick = 0; tick < 50; ++tick) session.timer1Call();
  EXPECT_TRUE(timer1->running);  // 50 quiet ticks are not yet a stall
  session.timer1Call();
  EXPECT_FALSE(timer1->running);
  EXPECT_EQ(closes, 1);
  EXPECT_EQ(state.g_voice_retry_count, 1);
  EXPECT_EQ(state.g_cdcwait_level, 1);
  ASSERT_TRUE(waitForState(TRY_TX_VOICE_RETRY));
  EXPECT_EQ(wire(), QList<QByteArray>{"#cdcwait 5"});
  session.timer2Call();  // the retry tick asks for the clip again
  EXPECT_EQ(requests, 1);
  EXPECT_EQ(state.g_serial_port_status, CONNECTED_IDLE);

  streaming(100000 - 10);
  stall();
  ASSERT_TRUE(waitForState(TRY_TX_VOICE_RETRY));
  EXPECT_EQ(wire().last(), "#cdcwait 8");
  session.timer2Call();

  streaming(100000 - 10);
  stall();
  ASSERT_TRUE(WaitFor([&] { return window.called("outcome:" + Localized("retry_recive_fail")); }));
  EXPECT_EQ(window.lastOutcome()->failure, Failure::RetriesExhausted);
  EXPECT_EQ(state.g_voice_retry_count, 0);
  EXPECT_EQ(state.g_cdcwait_level, 2);
  EXPECT_EQ(wire().size(), 2);
}

TEST_F(SupervisionTest, LargeShortfallFailsAtOnce) {
  streaming(100000 - 2048);
  stall();
  ASSERT_TRUE(WaitFor([&] { return window.called("outcome:" + Localized("recive_fail")); }));
  EXPECT_EQ(window.lastOutcome()->failure, Failure::Stalled);
  EXPECT_EQ(closes, 1);
  EXPECT_EQ(state.g_voice_retry_count, 0);
  EXPECT_TRUE(window.called("EnableButtonDownloadVoice:1"));
  QThread::msleep(100);
  EXPECT_TRUE(wire().isEmpty());
}

TEST_F(SupervisionTest, ExtraBytesNeverCompleteAndTheLevelStopsAt15) {
  state.g_cdcwait_level = 15;
  streaming(100000 + 7);  // more than announced: a stall with a negative shortfall
  stall();
  EXPECT_EQ(wavesMade, 0);
  EXPECT_EQ(state.g_cdcwait_level, 15);
  ASSERT_TRUE(waitForWire(1));
  EXPECT_EQ(wire().last(), "#cdcwait 0");

  // Past the four graded levels the device is sent the rest of the table as it stands.
  state.g_cdcwait_level = 3;
  state.g_voice_retry_count = 0;
  state.g_serial_port_status = CONNECTED_IDLE;
  streaming(100000 - 1);
  stall();
  ASSERT_TRUE(waitForWire(2));
  EXPECT_EQ(wire().last(), "#cdcwait 2");
}

}  // namespace
