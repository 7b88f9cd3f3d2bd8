#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "ManualTimer.h"
#include "Session.h"
#include "SessionWatch.h"
#include "SimulatedDevice.h"
#include "SystemLog.h"
#include "TestSupport.h"

// A session on the simulator's pty with a temporary Downloads folder, and the steps that
// every flow test takes: plug in, identify, wait.
class DeviceSessionFixture : public ::testing::Test {
 protected:
  // realTimer: the 0.1 s supervision ticks by themselves; otherwise the test ticks.
  explicit DeviceSessionFixture(bool realTimer = false);
  // On failure, prints the session's log: what it did before it went wrong.
  void TearDown() override;

  void plugIn(sim::Contents contents, sim::Options options = {});
  QList<QByteArray> wire() const { return device->device().commands(); }
  int wireCount(const QByteArray &command) const { return int(wire().count(command)); }
  bool waitForState(int32_t status, int timeoutMs = 5000);
  // Ticks the session timer until the state is reached (or the timeout passes).
  bool tickUntil(int32_t status, int timeoutMs = 10000);
  void stall();  // 51 supervision ticks without bytes
  // Waits for the device's answer to every "#detail" sent after the handshake (the one that
  // ends a listing or a download) before the test goes on, as a diver's pace always does.
  bool settle();
  StoragePaths paths() const { return session->state().paths.get(); }

  // What the session publishes now.
  DeviceState published() const { return session->model().state(); }

  TemporaryHome home;
  LogCapture log;
  // The clip's supervision timer, for the voice transfer a test makes; timer1 ticks it by hand
  // unless the test asked for a real one.
  std::unique_ptr<SupervisionTimer> clipTimer;
  ManualTimer *timer1 = nullptr;
  std::unique_ptr<sim::SimulatedDevice> device;
  std::unique_ptr<Session> session = std::make_unique<Session>();
  SessionWatch watch{session->model()};
};
