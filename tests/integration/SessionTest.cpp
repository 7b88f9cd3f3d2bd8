// The session on the simulator's pty, ticked by the test: the handshake's bytes and pace, the ways
// a connection ends, and the supervision of a clip.
#include <gtest/gtest.h>

#include <QThread>

#include "DeviceSessionFixture.h"
#include "Localization.h"

namespace {

class SessionTest : public DeviceSessionFixture {
 protected:
  void SetUp() override { session->setConnectionHandler(window.outcomes()); }
  void connect(sim::Options options = {}) {
    plugIn(sim::GenerateContents(3, QDate(2024, 2, 15)), options);
  }
  bool waitForWire(int count) {
    return WaitFor([&] { return wire().size() >= count; });
  }
  bool ended(Failure failure) {
    return WaitFor([&] { return window.lastOutcome().has_value(); }) &&
           window.lastOutcome()->failure == failure;
  }
  SessionState &state = session->state();
};

// Each request goes out on a tick, and after its reply a whole tick passes before the
// next: the device needs the pause between commands.
TEST_F(SessionTest, HandshakeTakesOneStepATickWithTheBytesOnTheWire) {
  connect();
  const struct {
    int32_t request, replied;
    QByteArray command;
  } steps[] = {{TRY_CONNECT_TX_KIND, TRY_CONNECT_KIND_DONE, "#kind"},
               {TRY_CONNECT_TX_DETAIL, TRY_CONNECT_DETAIL_DONE, "#detail"},
               {TRY_CONNECT_TX_GSER, TRY_TX_VOICE_INDEX, "#gser"}};
  for (const auto &[request, replied, command] : steps) {
    EXPECT_EQ(state.g_serial_port_status, request);
    session->timer2Call();
    ASSERT_TRUE(waitForState(replied)) << command.constData();
    EXPECT_EQ(wire().last(), command);
    if (replied != TRY_TX_VOICE_INDEX) session->timer2Call();
  }
  EXPECT_EQ(window.text(Outlet::label_type), "QM482");
  EXPECT_EQ(state.g_flow_control_enabled, 1);
  EXPECT_EQ(window.text(Outlet::label_serial_number), "SN.28417305");

  session->timer2Call();  // no voice reader here: the state waits in RX_VOICE_INDEX
  EXPECT_EQ(state.g_serial_port_status, RX_VOICE_INDEX);
  EXPECT_EQ(state.g_receive_data_type_is_voice_record, eSERIAL_RX_VOICE_INDEX);
  // The voice index reply moves the session on to the log history, whose list starts empty.
  state.g_serial_port_status = TRY_TX_LOG_HISTORY;
  session->timer2Call();
  EXPECT_EQ(state.g_receive_data_type_is_voice_record, eSERIAL_RX_LOG_HISTORY);
  ASSERT_TRUE(waitForWire(5));
  EXPECT_EQ(wire(), (QList<QByteArray>{"#kind", "#detail", "#gser", "vi", "lh"}));
  EXPECT_TRUE(window.called("reloadList:log=0"));
}

TEST_F(SessionTest, ModelReplySplitOverTwoReadsDisconnectsUntilReconnect) {
  sim::Options options;
  options.splitReplies["kind"] = {5};
  options.splitGapMs = 200;
  connect(options);
  session->timer2Call();
  ASSERT_TRUE(ended(Failure::WrongModel));
  EXPECT_EQ(window.lastOutcome()->sentence, Localized("target_model_error"));
  session->timer2Call();  // in DISCONNECTED the tick does nothing
  EXPECT_EQ(state.g_serial_port_status, DISCONNECTED);
  session->Reconnect();
  ASSERT_TRUE(waitForWire(2));
  EXPECT_EQ(wire().last(), "#kind");
}

// A request that cannot go out leaves no state waiting for a reply that cannot come.
TEST_F(SessionTest, WithoutAPortNothingIsSentAndNothingWaits) {
  session->timer2Call();
  session->Reconnect();
  EXPECT_EQ(state.g_serial_port_status, TRY_CONNECT_TX_KIND);
  state.g_serial_port_status = TRY_CONNECT_TX_DETAIL;
  state.g_read_index_sequence = 1;
  session->timer2Call();
  EXPECT_EQ(state.g_serial_port_status, DISCONNECTED);
  EXPECT_EQ(state.g_read_index_sequence, 0);
  EXPECT_TRUE(window.called("messageBox:Corvamund power is off"));
}

TEST_F(SessionTest, PortsThatCannotBeOpenedLeaveNothingOpenAndSayWhy) {
  SimulatedDevice device(sim::GenerateContents(3, QDate(2024, 2, 15)));
  EXPECT_EQ(session->openSerialPort(device.slavePath(), 12345), "Error: Baud Rate out of bounds");
  EXPECT_FALSE(state.readThreadRunning);
  EXPECT_TRUE(window.called("setText:label_poweron_message=" + Localized("initial_error")));
  // The errno is what a user with a missing permission is sent to the system log for.
  EXPECT_EQ(log.startingWith("serial port open error:Error: Baud Rate out of bounds no:").size(),
            1u);
  EXPECT_EQ(session->openSerialPort("/dev/no-such-port", 9600), "Error: couldn't open serial port");
  EXPECT_FALSE(session->channel().isOpen());
}

// The cable pulled mid-connection, then plugged in again: the read fails, the port closes, and the
// new line is identified afresh with no restart. A second port opened over the first ends the
// first's receive thread.
TEST_F(SessionTest, UnplugEndsTheConnectionAndAReplugIsIdentifiedAfresh) {
  connect();
  ASSERT_TRUE(tickUntil(TRY_TX_VOICE_INDEX));
  device.reset();
  ASSERT_TRUE(WaitFor([&] { return !state.readThreadRunning; }));
  EXPECT_FALSE(session->channel().isOpen());
  EXPECT_TRUE(ended(Failure::Unplugged));
  EXPECT_EQ(state.g_serial_port_status, DISCONNECTED);

  connect();
  EXPECT_EQ(state.g_serial_port_status, TRY_CONNECT_TX_KIND);
  ASSERT_TRUE(tickUntil(TRY_TX_VOICE_INDEX));
  EXPECT_EQ(wire(), (QList<QByteArray>{"#kind", "#detail", "#gser"}));

  const std::unique_ptr<SimulatedDevice> first = std::move(device);
  log.clear();
  connect();
  EXPECT_EQ(log.startingWith("read error!").size(), 1u);
  EXPECT_TRUE(state.readThreadRunning);
  ASSERT_TRUE(tickUntil(TRY_CONNECT_KIND_DONE));
  EXPECT_EQ(first->device().commands().size(), 3);
}

TEST_F(SessionTest, ADeviceThatStopsAnsweringEndsTheConnectionAtTheDeadline) {
  sim::Options silent;
  silent.silentCommands = {"gser"};
  int64_t now = 0;
  session->context().clockMs = [&now] { return now; };
  connect(silent);
  ASSERT_TRUE(tickUntil(TRY_CONNECT_RX_GSER));
  now += kReplyDeadlineMs - 1;
  session->timer2Call();
  EXPECT_EQ(state.g_serial_port_status, TRY_CONNECT_RX_GSER);
  now += 1;
  session->timer2Call();
  EXPECT_EQ(state.g_serial_port_status, DISCONNECTED);
  ASSERT_TRUE(ended(Failure::NotAnswering));
  EXPECT_EQ(window.lastOutcome()->sentence, Localized("device_not_answering"));
  EXPECT_TRUE(window.called("setEnabled:button_reconnect=1"));  // Reconnect is offered
}

TEST_F(SessionTest, RemovalIsNoticedInIdleAndGatesTheQuitGuard) {
  state.g_serial_port_status = CONNECTED_IDLE;
  state.deviceExist = 1;
  state.g_voice_download_active = 1;
  session->timer2Call();
  EXPECT_TRUE(window.isProcessing());
  state.deviceExist = 0;
  session->timer2Call();
  EXPECT_EQ(state.g_serial_port_status, DISCONNECTED);
  EXPECT_FALSE(window.isProcessing());
  for (const char *call : {"setVisible:label_com_number=1", "setText:label_serial_number=SN.",
                           "setEnabled:button_reconnect=0", "EnableButtonDownloadVoice:0",
                           "EnableButtonDownloadLog:0"})
    EXPECT_TRUE(window.called(call)) << call;
}

// The supervision of a clip of 100000 bytes, ticked by the test; the device answers "#cdcwait",
// whose level steps down after a clean clip and up after a stall.
class SupervisionTest : public SessionTest {
 protected:
  void SetUp() override {
    connect();  // with no one to hear how the connection ends: the test takes over
    state.g_serial_port_status = CONNECTED_IDLE;
    session->context().operation.fail(Failure::Cancelled, QString());
    session->context().operation.begin(Operation::DownloadClip, window.outcomes());
    SessionHooks &hooks = session->context().hooks;
    hooks.MakeWaveFile = [this] {
      ++wavesMade;
      return Outcome{Operation::DownloadClip, Failure::None, QString(), {}};
    };
    hooks.CloseVoiceBinary = [this] { ++closes; };
    hooks.DownloadVoiceData = [this] { ++requests; };
  }
  void streaming(int32_t received) {
    state.g_receive_data_type_is_voice_record = eSERIAL_RX_VOICE_DATA;
    state.g_voice_data_size = 100000;
    state.g_voice_received_size = received;
    state.g_voice_idle_ticks = 0;
    session->timer1Start();
  }
  int wavesMade = 0, closes = 0, requests = 0;
};

TEST_F(SupervisionTest, CleanClipLowersTheWaitLevelOneStep) {
  state.g_cdcwait_level = 3;
  streaming(99999);
  session->timer1Call();
  EXPECT_TRUE(window.called("setProgress:99"));
  state.g_voice_received_size = 100000;
  session->timer1Call();
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
  session->timer1Call();
  EXPECT_EQ(wire().size(), 1);
  EXPECT_TRUE(window.called("EnableComboBoxVoiceIndex:1"));
}

TEST_F(SupervisionTest, ShortTailIsRetriedTwiceThenGivenUp) {
  streaming(100000 - 2047);
  for (int tick = 0; tick < 50; ++tick) session->timer1Call();
  EXPECT_TRUE(timer1->running);  // 50 quiet ticks are not yet a stall
  session->timer1Call();
  EXPECT_FALSE(timer1->running);
  EXPECT_EQ(closes, 1);
  EXPECT_EQ(state.g_voice_retry_count, 1);
  ASSERT_TRUE(waitForState(TRY_TX_VOICE_RETRY));
  EXPECT_EQ(wire(), QList<QByteArray>{"#cdcwait 5"});
  session->timer2Call();  // the retry tick asks for the clip again
  EXPECT_EQ(requests, 1);
  EXPECT_EQ(state.g_serial_port_status, CONNECTED_IDLE);

  streaming(100000 - 10);
  stall();
  ASSERT_TRUE(waitForState(TRY_TX_VOICE_RETRY));
  EXPECT_EQ(wire().last(), "#cdcwait 8");
  session->timer2Call();

  streaming(100000 - 10);
  stall();
  ASSERT_TRUE(ended(Failure::RetriesExhausted));
  EXPECT_EQ(window.lastOutcome()->sentence, Localized("retry_recive_fail"));
  EXPECT_EQ(state.g_voice_retry_count, 0);
  EXPECT_EQ(state.g_cdcwait_level, 2);
  EXPECT_EQ(wire().size(), 2);
}

TEST_F(SupervisionTest, LargeShortfallFailsAtOnce) {
  streaming(100000 - 2048);
  stall();
  ASSERT_TRUE(ended(Failure::Stalled));
  EXPECT_EQ(window.lastOutcome()->sentence, Localized("recive_fail"));
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
