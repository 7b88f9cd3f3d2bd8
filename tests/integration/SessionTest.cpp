// The session on the simulator's pty, ticked by the test: the ways a connection ends. The
// handshake's bytes and pace are seen by the device of AppBinaryOnVirtualUsb.
#include <gtest/gtest.h>

#include "DeviceSessionFixture.h"
#include "Localization.h"

namespace {

class SessionTest : public DeviceSessionFixture {
 protected:
  void SetUp() override { session->setConnectionHandler(watch.outcomes()); }
  void connect(sim::Options options = {}) {
    plugIn(sim::GenerateContents(3, QDate(2024, 2, 15)), options);
  }
  bool ended(Failure failure) {
    return WaitFor([&] { return watch.lastOutcome && watch.lastOutcome->failure == failure; });
  }
  SessionState &state = session->state();
};

TEST_F(SessionTest, PortsThatCannotBeOpenedLeaveNothingOpenAndSayWhy) {
  sim::SimulatedDevice device(sim::GenerateContents(3, QDate(2024, 2, 15)));
  EXPECT_EQ(session->openSerialPort(device.slavePath(), 12345), "Error: Baud Rate out of bounds");
  EXPECT_FALSE(state.readThreadRunning);
  EXPECT_TRUE(published().portOpenFailed);
  // The errno is what a user with a missing permission is sent to the system log for.
  EXPECT_EQ(log.startingWith("serial port open error:Error: Baud Rate out of bounds no:").size(),
            1u);
  EXPECT_EQ(session->openSerialPort("/dev/no-such-port", 9600), "Error: couldn't open serial port");
  EXPECT_FALSE(session->channel().isOpen());
}

// The cable pulled mid-connection, then plugged in again: the read fails, the port closes, and the
// new line is identified afresh with no restart. A second port opened over the first ends the
// first's receive thread; a device that stops answering is let go at the reply deadline.
TEST_F(SessionTest, UnplugEndsTheConnectionAndAReplugIsIdentifiedAfresh) {
  int64_t now = 0;
  session->context().clockMs = [&now] { return now; };
  connect();
  ASSERT_TRUE(tickUntil(TRY_TX_VOICE_INDEX));
  device.reset();
  ASSERT_TRUE(WaitFor([&] { return !state.readThreadRunning; }));
  EXPECT_FALSE(session->channel().isOpen());
  EXPECT_TRUE(ended(Failure::Unplugged));
  EXPECT_EQ(state.phase, DISCONNECTED);

  connect();
  ASSERT_TRUE(tickUntil(TRY_TX_VOICE_INDEX));
  EXPECT_EQ(wire(), (QList<QByteArray>{"#kind", "#detail", "#gser"}));

  const std::unique_ptr<sim::SimulatedDevice> first = std::move(device);
  log.clear();
  watch.clear();
  sim::Options silent;
  silent.silentCommands = {"gser"};
  connect(silent);
  EXPECT_EQ(log.startingWith("read error!").size(), 1u);
  EXPECT_TRUE(state.readThreadRunning);
  ASSERT_TRUE(tickUntil(TRY_CONNECT_RX_GSER));
  EXPECT_EQ(first->device().commands().size(), 3);
  now += kReplyDeadlineMs - 1;
  session->tick();
  EXPECT_EQ(state.phase, TRY_CONNECT_RX_GSER);
  now += 1;
  session->tick();
  EXPECT_EQ(state.phase, DISCONNECTED);
  ASSERT_TRUE(ended(Failure::NotAnswering));
  EXPECT_EQ(watch.lastOutcome->sentence, Localized("device_not_answering"));
  EXPECT_EQ(published().phase, DevicePhase::Stopped);  // Reconnect is offered
}

}  // namespace
