// Discovery over the IOKit registry backend, on an in-memory I/O Registry: a Mac's USB
// controller and hub with the device, its interface, the ACM driver and the serial client
// below. The test turns the main run loop; walks run on their own threads as in the product.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DeviceDiscovery.h"
#include "DeviceSessionFixture.h"
#include "FakeIoKit.h"
#include "IoKitRegistry.h"
#include "SimContents.h"

namespace {

using fake_iokit::AddEntry;
using fake_iokit::Behaviour;

class IoKitDiscoveryTest : public DeviceSessionFixture {
 protected:
  IoKitDiscoveryTest() {
    fake_iokit::Reset();
    const io_object_t controller = AddEntry(0, "AppleT8103USBXHCI", "usb-drd0");
    hub = AddEntry(controller, "AppleUSB20Hub", "USB2.0 Hub", {{"locationID", 0x01100000}});
    device = std::make_unique<SimulatedDevice>(sim::GenerateContents(1, QDate(2026, 11, 23)));
  }

  // Everything handed out is given back once discovery has gone, but for the services whose
  // take-in failed: those stay held for the life of the program.
  void TearDown() override {
    discovery.reset();
    const fake_iokit::Held held = fake_iokit::Outstanding();
    EXPECT_EQ(held.objectReferences, servicesKeptForGood);
    EXPECT_EQ(held.plugIns, 0);
    EXPECT_EQ(held.deviceInterfaces, 0);
    EXPECT_EQ(held.cfObjects, 0);
    EXPECT_EQ(held.ports, 0);
    EXPECT_THAT(fake_iokit::Misuse(), testing::IsEmpty());
    DeviceSessionFixture::TearDown();
  }

  // A device of the family with the nodes the system attaches below it; no serial client
  // when callout is empty. Its interface repeats its IDs, as on a Mac.
  io_object_t addDevice(io_object_t parent, uint32_t location, const std::string &callout,
                        Behaviour behaviour = {}, uint32_t product = kCorvamundProductId) {
    behaviour.locationID = location;
    const io_object_t usb = AddEntry(
        parent, "IOUSBHostDevice", "QM482",
        {{"idVendor", kCorvamundVendorId}, {"idProduct", product}, {"locationID", location}},
        behaviour);
    const io_object_t interface = AddEntry(
        usb, "IOUSBHostInterface", "CDC Data",
        {{"idVendor", kCorvamundVendorId}, {"idProduct", product}, {"bInterfaceNumber", 1}});
    const io_object_t acm = AddEntry(interface, "AppleUSBACMData", "AppleUSBACMData");
    if (!callout.empty()) {
      AddEntry(acm, "IOSerialBSDClient", "IOSerialBSDClient",
               {{"IOCalloutDevice", callout}, {"IOTTYBaseName", "usbmodem"}});
    }
    return usb;
  }

  void start() {
    discovery = std::make_unique<DeviceDiscovery>(session.get(), std::make_unique<IoKitRegistry>());
    discovery->setPacingSleep([this] { ++paces; });
    discovery->InitDevice();
  }
  // The main run loop takes what IOKit has queued; then the walks it started finish.
  void deliver() {
    fake_iokit::RunMainLoop();
    discovery->waitForWalks();
  }
  std::vector<std::string> opened() const { return log.startingWith("serial port name is "); }

  io_object_t hub = 0;
  std::atomic<int> paces{0};
  int servicesKeptForGood = 0;
  std::unique_ptr<DeviceDiscovery> discovery;
};

TEST_F(IoKitDiscoveryTest, DevicesOfTheFirstWalkAreCountedOnlyAndLaterArrivalsOpened) {
  addDevice(hub, 0x01110000, "/dev/cu.usbmodem1");
  // One more arrives while the first walk drains the iterator: the same walk takes it.
  bool arrived = false;
  fake_iokit::OnIteratorNext([&] {
    if (!std::exchange(arrived, true)) addDevice(hub, 0x01120000, "/dev/cu.usbmodem2");
  });
  start();
  EXPECT_EQ(session->state().deviceExist, 2);
  EXPECT_FALSE(session->state().initialRunning);
  deliver();
  EXPECT_TRUE(opened().empty());

  // The drained iterator is armed again: the next arrival is called back and opened.
  fake_iokit::OnIteratorNext(nullptr);
  addDevice(hub, 0x01130000, device->slavePath().toStdString());
  deliver();
  EXPECT_EQ(session->state().deviceExist, 3);
  EXPECT_TRUE(session->channel().isOpen());
  EXPECT_TRUE(log.contains("deviceName:QM482"));
  EXPECT_TRUE(log.contains("Location ID: 0x1130000"));
  EXPECT_TRUE(log.contains("serial port open:" + device->slavePath().toStdString()));
}

// The search starts at the device's parent and goes depth first through everything below
// it, so a serial node of another device on the same hub comes first: it is skipped, never
// tried. A node of the QM482 that will not open does not end the search. Every entry
// searched is paced once: the modem, its interface and driver, the QM482's three, the hub.
TEST_F(IoKitDiscoveryTest, SearchClimbsToTheHubSkipsOtherDevicesAndTriesItsOwnCalloutsInOrder) {
  addDevice(hub, 0x01110000, "/dev/cu.usbmodem-other", {}, 0x0001);
  start();
  const io_object_t ours = addDevice(hub, 0x01120000, "/dev/cu.no-such-port");
  AddEntry(ours, "IOSerialBSDClient", "IOSerialBSDClient",
           {{"IOCalloutDevice", device->slavePath().toStdString()}});
  deliver();
  EXPECT_EQ(session->state().deviceExist, 1);
  EXPECT_TRUE(log.contains(
      "GetChildDeviceInfomation:skip /dev/cu.usbmodem-other, it belongs to another USB device"));
  EXPECT_THAT(opened(),
              testing::ElementsAre("serial port name is /dev/cu.no-such-port",
                                   "serial port name is " + device->slavePath().toStdString()));
  EXPECT_EQ(log.startingWith("serial port open error:Error: couldn't open serial port").size(), 1u);
  EXPECT_TRUE(session->channel().isOpen());
  EXPECT_EQ(paces, 7);
  ASSERT_EQ(log.startingWith("GetDeviceInfomation:0x").size(), 1u);
  EXPECT_THAT(log.startingWith("GetDeviceInfomation:0x")[0],
              testing::HasSubstr("{idProduct = 19794; idVendor = 4617; locationID = 17956864}, "
                                 "{locationID = 17825792})"));
}

// Without a serial node the search climbs to the registry's root, searching the whole
// subtree at each level: 4 entries below the hub, 5 below the controller, 6 below the root.
TEST_F(IoKitDiscoveryTest, TreeWithoutCalloutOpensNothingAfterPacingEveryEntryVisited) {
  start();
  addDevice(hub, 0x01110000, "");
  deliver();
  EXPECT_EQ(session->state().deviceExist, 1);
  EXPECT_TRUE(opened().empty());
  EXPECT_FALSE(session->channel().isOpen());
  EXPECT_EQ(paces, 15);
}

TEST_F(IoKitDiscoveryTest, TwoDevicesCountUpAndEachRemovalFreesItsRecordAndCountsDown) {
  SimulatedDevice second(sim::GenerateContents(2, QDate(2026, 11, 23)));
  const io_object_t otherHub = AddEntry(0, "AppleUSB20Hub", "USB2.0 Hub");
  start();
  const io_object_t first = addDevice(hub, 0x01110000, device->slavePath().toStdString());
  const io_object_t other = addDevice(otherHub, 0x02110000, second.slavePath().toStdString());
  deliver();
  EXPECT_EQ(session->state().deviceExist, 2);
  EXPECT_EQ(opened().size(), 2u);
  EXPECT_EQ(fake_iokit::Outstanding().deviceInterfaces, 2);

  fake_iokit::Terminate(first);
  deliver();
  EXPECT_EQ(session->state().deviceExist, 1);
  EXPECT_TRUE(log.contains("Device removed."));
  EXPECT_TRUE(log.contains("deviceName:QM482,locationID:0x1110000"));
  EXPECT_EQ(fake_iokit::Outstanding().deviceInterfaces, 1);

  fake_iokit::Terminate(other);
  deliver();
  EXPECT_EQ(session->state().deviceExist, 0);
  EXPECT_EQ(fake_iokit::Outstanding().deviceInterfaces, 0);
  EXPECT_EQ(fake_iokit::Outstanding().objectReferences, 1);  // the arrival iterator
}

// Each failure exit of the take-in leaves the device counted, with no removal registration
// that could count it down; the plug-in interface is given back on every path.
TEST_F(IoKitDiscoveryTest, FailedTakeInLeavesTheDeviceCountedForGood) {
  start();
  const io_object_t devices[] = {
      addDevice(hub, 0x01110000, "/dev/cu.a", {.plugInResult = kIOReturnUnsupported}),
      addDevice(hub, 0x01120000, "/dev/cu.b", {.queryResult = E_NOINTERFACE}),
      addDevice(hub, 0x01130000, "/dev/cu.c", {.locationResult = kIOReturnNotFound}),
  };
  servicesKeptForGood = 3;
  deliver();
  EXPECT_EQ(session->state().deviceExist, 3);
  EXPECT_TRUE(log.contains("IOCreatePlugInInterfaceForService returned 0xe00002c7."));
  EXPECT_TRUE(log.contains("QueryInterface returned -2147483644."));
  EXPECT_TRUE(log.contains("GetLocationID returned 0xe00002f0."));
  EXPECT_TRUE(opened().empty());
  EXPECT_EQ(fake_iokit::Outstanding().plugIns, 0);

  for (io_object_t gone : devices) fake_iokit::Terminate(gone);
  deliver();
  EXPECT_EQ(session->state().deviceExist, 3);
  EXPECT_FALSE(log.contains("Device removed."));
}

}  // namespace
