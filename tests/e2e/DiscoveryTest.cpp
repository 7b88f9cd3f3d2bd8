// Discovery on a virtual USB bus: the real udev registry sees fake sysfs devices and their events,
// and opens a pty-backed tty node behind which the simulator answers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <termios.h>

#include <QCoreApplication>
#include <QThread>

#include <atomic>

#include "DeviceDiscovery.h"
#include "DeviceSessionFixture.h"
#include "SimContents.h"
#include "VirtualUsb.h"

namespace {

class DiscoveryTest : public DeviceSessionFixture {
 protected:
  void start() {
    ASSERT_TRUE(VirtualUsb::inMockEnvironment()) << "run under umockdev-wrapper";
    discovery = std::make_unique<DeviceDiscovery>(session.get(), MakePlatformRegistry());
    discovery->setPacingSleep([this] { ++paces; });
    // Only opens off the main thread, where the session lives, could meet one another.
    discovery->setPortOpener([this](const QString &path, unsigned baud) {
      opensOffMainThread += QThread::currentThread() != qApp->thread();
      return session->openSerialPort(path, baud);
    });
    discovery->startDiscovery();
  }
  // Lets the main thread take the bus's events, then waits for the walks they started.
  void settleWalks() {
    WaitFor([] { return false; }, 200);
    discovery->waitForWalks();
  }

  VirtualUsb usb;
  std::atomic<int> paces{0}, opensOffMainThread{0};
  std::unique_ptr<DeviceDiscovery> discovery;
};

// Only the family's vendor and product IDs count: another device of the vendor on the hub's
// first port is searched first, and its tty is skipped, never opened. Ours is set to 9600
// baud, the only speed the device understands. (Devices attached before start are seen by
// AppOnVirtualUsb and IoKitDiscoveryTest.)
TEST_F(DiscoveryTest, DevicePluggedInLaterIsFoundDownToItsOwnTtyAndOpenedAt9600) {
  usb.add("1-1", kCorvamundVendorId, 0x0001);  // with /dev/ttyACM0
  start();
  const VirtualUsb::Device plugged = usb.plugIn("1-2");
  ASSERT_TRUE(WaitFor([&] { return session->channel().isOpen(); }, 20000));
  settleWalks();
  EXPECT_EQ(session->state().deviceExist, 1);
  EXPECT_TRUE(log.contains("Location ID: 0x1200000"));
  EXPECT_THAT(log.startingWith("serial port open"),
              testing::ElementsAre("serial port open:/dev/ttyACM1"));
  EXPECT_EQ(paces, 5);  // the other's interface and device, ours, the hub: each paced once
  termios line{};
  ASSERT_EQ(tcgetattr(plugged.master, &line), 0);
  EXPECT_EQ(cfgetospeed(&line), B9600);
}

// Removal counts down, and the same port plugged in again is taken in again. Without its
// bus attributes a device's location cannot be read: it is counted, never registered for
// removal, so unplugging it leaves the count as it was.
TEST_F(DiscoveryTest, DevicesAreCountedUpAndDownAndAFailedTakeInStaysCounted) {
  start();
  const VirtualUsb::Device first = usb.plugIn("1-1");
  const VirtualUsb::Device second = usb.plugIn("1-2");
  settleWalks();
  EXPECT_EQ(session->state().deviceExist, 2);
  EXPECT_EQ(opensOffMainThread, 0);
  const auto counted = [&](int devices) {
    return WaitFor([&] { return session->state().deviceExist == devices; }, 20000);
  };
  usb.unplug(first);
  EXPECT_TRUE(counted(1));
  EXPECT_TRUE(log.contains("deviceName:QM482,locationID:0x1100000"));
  usb.announce(first, "add");
  EXPECT_TRUE(counted(2));
  usb.unplug(first);
  EXPECT_TRUE(counted(1));

  const VirtualUsb::Device broken =
      usb.add("1-3", kCorvamundVendorId, kCorvamundProductId, true, false);
  usb.announce(broken, "add");
  settleWalks();
  EXPECT_TRUE(log.contains("GetLocationID returned 0xe00002c7."));
  EXPECT_EQ(session->state().deviceExist, 2);
  usb.unplug(broken);
  usb.unplug(second);
  EXPECT_TRUE(counted(1));
  settleWalks();
  EXPECT_EQ(session->state().deviceExist, 1);
}

}  // namespace
