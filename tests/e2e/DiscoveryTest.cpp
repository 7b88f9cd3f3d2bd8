// Discovery on a virtual USB bus: the real udev registry sees fake sysfs devices and
// their events, and opens a pty-backed tty node behind which the simulator answers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <termios.h>

#include <QCoreApplication>
#include <QThread>

#include <atomic>

#include "DeviceDiscovery.h"
#include "DeviceSessionFixture.h"
#include "LogTransfer.h"
#include "SimContents.h"
#include "SimulatedDevice.h"
#include "VirtualUsb.h"
#include "VoiceTransfer.h"

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
    discovery->InitDevice();
  }
  // Lets the main thread take the bus's events, then waits for the walks they started.
  void settleWalks() {
    WaitFor([] { return false; }, 200);
    discovery->waitForWalks();
  }
  bool logged(const std::string &line) const { return log.contains(line); }

  VirtualUsb usb;
  VoiceTransfer voice{*session};
  LogTransfer logs{*session};
  std::atomic<int> paces{0}, opensOffMainThread{0};
  std::unique_ptr<DeviceDiscovery> discovery;
};

TEST_F(DiscoveryTest, DeviceAttachedAtStartIsCountedButNotOpened) {
  usb.add("1-1", kCorvamundVendorId, kCorvamundProductId);
  usb.add("1-2", 0x1209, 0x0001);  // another device of the same vendor
  start();
  EXPECT_EQ(session->state().deviceExist, 1);
  EXPECT_FALSE(session->state().initialRunning);
  settleWalks();
  EXPECT_FALSE(session->channel().isOpen());
  EXPECT_TRUE(logged("Looking for devices matching vendor ID=0x1209 and product ID=0x4D52."));
  EXPECT_TRUE(logged("Device added."));
  EXPECT_TRUE(log.startingWith("serial port name is").empty());
}

// A modem on the hub's first port is searched first: its tty is skipped, never opened.
TEST_F(DiscoveryTest, DevicePluggedInLaterIsFoundDownToItsOwnTtyAndOpenedAt9600) {
  usb.add("1-1", 0x2345, 0x0001);  // the modem, with /dev/ttyACM0
  start();
  const VirtualUsb::Device plugged = usb.plugIn("1-2");
  ASSERT_TRUE(WaitFor([&] { return session->channel().isOpen(); }, 5000));
  settleWalks();
  EXPECT_EQ(session->state().deviceExist, 1);
  EXPECT_TRUE(logged("deviceName:QM482"));
  EXPECT_TRUE(logged("Location ID: 0x1200000"));
  EXPECT_TRUE(
      logged("GetChildDeviceInfomation:skip /dev/ttyACM0, it belongs to another USB device"));
  EXPECT_THAT(log.startingWith("serial port open"),
              testing::ElementsAre("serial port open:/dev/ttyACM1"));
  // Five entries searched (the modem's interface and device, ours, the hub), each paced once.
  EXPECT_EQ(paces, 5);
  ASSERT_EQ(log.startingWith("GetDeviceInfomation:0x").size(), 1u);

  termios line{};
  ASSERT_EQ(tcgetattr(plugged.master, &line), 0);
  EXPECT_EQ(cfgetospeed(&line), B9600);
  device = std::make_unique<SimulatedDevice>(sim::GenerateContents(1, QDate(2026, 11, 23)),
                                             sim::Options{}, plugged.master);
  session->timer2Call();
  EXPECT_TRUE(WaitFor([&] { return wireCount("#kind") == 1; }, 5000));
}

TEST_F(DiscoveryTest, DevicesAreCountedUpAndDownAndAFailedTakeInStaysCounted) {
  start();
  const VirtualUsb::Device first = usb.plugIn("1-1");
  const VirtualUsb::Device second = usb.plugIn("1-2");
  settleWalks();
  EXPECT_EQ(session->state().deviceExist, 2);
  EXPECT_EQ(log.startingWith("serial port name is").size(), 2u);
  EXPECT_EQ(opensOffMainThread, 0);

  usb.unplug(first);
  EXPECT_TRUE(WaitFor([&] { return session->state().deviceExist == 1; }, 5000));
  EXPECT_TRUE(logged("Device removed."));
  EXPECT_TRUE(logged("deviceName:QM482,locationID:0x1100000"));

  // Without its bus attributes the device's location cannot be read: it is counted, never
  // registered for removal, so unplugging it leaves the count as it was.
  const VirtualUsb::Device broken =
      usb.add("1-3", kCorvamundVendorId, kCorvamundProductId, true, false);
  usb.announce(broken, "add");
  settleWalks();
  EXPECT_TRUE(logged("GetLocationID returned 0xe00002c7."));
  EXPECT_EQ(session->state().deviceExist, 2);
  usb.unplug(broken);
  usb.unplug(second);
  EXPECT_TRUE(WaitFor([&] { return session->state().deviceExist == 1; }, 5000));
  WaitFor([] { return false; }, 200);
  EXPECT_EQ(session->state().deviceExist, 1);
}

TEST_F(DiscoveryTest, UnplugWhileIdleDisconnectsOnTheNextTick) {
  start();
  const VirtualUsb::Device plugged = usb.plugIn("1-1");
  device = std::make_unique<SimulatedDevice>(sim::GenerateContents(2, QDate(2026, 11, 23)),
                                             sim::Options{}, plugged.master);
  ASSERT_TRUE(WaitFor([&] { return session->channel().isOpen(); }, 5000));
  ASSERT_TRUE(tickUntil(CONNECTED_IDLE, 20000));
  ASSERT_TRUE(WaitFor([&] { return session->state().g_read_index_sequence == 0; }, 20000));
  ASSERT_TRUE(settle());

  usb.unplug(plugged);
  ASSERT_TRUE(WaitFor([&] { return session->state().deviceExist == 0; }, 5000));
  window.clear();
  session->timer2Call();
  EXPECT_EQ(session->state().g_serial_port_status, DISCONNECTED);
  EXPECT_TRUE(window.called("setVisible:label_com_number=1"));
  EXPECT_TRUE(window.called("setEnabled:button_reconnect=0"));
  EXPECT_TRUE(window.called("EnableButtonDownloadVoice:0"));
  EXPECT_TRUE(window.called("EnableButtonDownloadLog:0"));
}

}  // namespace
