#include "DeviceSessionFixture.h"

#include <QThread>
#include <cstdio>

DeviceSessionFixture::DeviceSessionFixture(bool realTimer) {
  if (realTimer) {
    clipTimer = MakeQtSupervisionTimer();
  } else {
    timer1 = new ManualTimer;
    clipTimer.reset(timer1);
  }
  EXPECT_TRUE(session->context().createFolders());
}

void DeviceSessionFixture::TearDown() {
  if (!HasFailure()) return;
  for (const std::string &line : log.lines()) std::fprintf(stderr, "log: %s\n", line.c_str());
}

void DeviceSessionFixture::plugIn(sim::Contents contents, sim::Options options) {
  device = std::make_unique<sim::SimulatedDevice>(std::move(contents), options);
  session->state().deviceExist = 1;
  ASSERT_EQ(session->openSerialPort(device->slavePath(), 9600), std::nullopt);
}

bool DeviceSessionFixture::waitForState(int32_t status, int timeoutMs) {
  return WaitFor([&] { return session->state().phase == status; }, timeoutMs);
}

bool DeviceSessionFixture::tickUntil(int32_t status, int timeoutMs) {
  return WaitFor(
      [&] {
        if (session->state().phase == status) return true;
        session->tick();
        QThread::msleep(20);
        return session->state().phase == status;
      },
      timeoutMs);
}

void DeviceSessionFixture::stall() {
  for (int tick = 0; tick < 51; ++tick) timer1->tick();
}

bool DeviceSessionFixture::settle() {
  return WaitFor([&] {
    // Counted as the host sent them: the simulator may not have read the last one yet.
    return !session->state().trailingReplyPending &&
           log.startingWith("Reciving other commands:OK").size() + 1 >=
               log.startingWith("writeString:#detail").size();
  });
}
