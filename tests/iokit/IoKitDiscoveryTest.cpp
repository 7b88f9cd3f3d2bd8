// The IOKit registry backend on an in-memory I/O Registry, for what only it can get wrong
// (the walk's rules are DiscoveryTest's): matching by IDs, the climb where a device's interface
// repeats its IDs, re-arming the arrival iterator, every registry reference given back once.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DeviceDiscovery.h"
#include "DeviceSessionFixture.h"
#include "FakeIoKit.h"
#include "IoKitRegistry.h"
#include "SimContents.h"

namespace {

using fake_iokit::AddEntry;

class IoKitDiscoveryTest : public DeviceSessionFixture {
 protected:
  IoKitDiscoveryTest() {
    hub = AddEntry(AddEntry(0, "AppleT8103USBXHCI"), "AppleUSB20Hub", {{"locationID", 0x01100000}});
    device = std::make_unique<sim::SimulatedDevice>(sim::GenerateContents(1, QDate(2026, 11, 23)));
  }

  // A USB device on the hub with its interface, ACM driver and serial client.
  io_object_t addDevice(uint32_t location, const std::string &callout,
                        uint32_t product = kCorvamundProductId) {
    fake_iokit::Properties ids = {{"idVendor", kCorvamundVendorId}, {"idProduct", product}};
    ids["locationID"] = location;
    const io_object_t usb = AddEntry(hub, "IOUSBHostDevice", ids);
    ids.erase("locationID"), ids["bInterfaceNumber"] = 1;
    const io_object_t acm = AddEntry(AddEntry(usb, "IOUSBHostInterface", ids), "AppleUSBACMData");
    AddEntry(acm, "IOSerialBSDClient", {{"IOCalloutDevice", callout}});
    return usb;
  }

  io_object_t hub = 0;
};

// A QM482 attached before start is counted only. One plugged in later is called back for;
// the search climbs from it to the hub and goes through everything below depth first: a
// modem's node and the first QM482's are skipped as other devices', its own node that will
// not open does not end the search, and its second one is opened.
TEST_F(IoKitDiscoveryTest, LaterArrivalIsFoundBelowItsOwnDeviceAndEveryReferenceGivenBack) {
  addDevice(0x01110000, "/dev/cu.usbmodem-other", 0x0001);
  addDevice(0x01120000, "/dev/cu.usbmodem-first");
  auto discovery =
      std::make_unique<DeviceDiscovery>(session.get(), std::make_unique<IoKitRegistry>());
  discovery->setPacingSleep([] {});
  discovery->startDiscovery();
  EXPECT_EQ(session->state().deviceExist, 1);

  const io_object_t ours = addDevice(0x01130000, "/dev/cu.no-such-port");
  AddEntry(ours, "IOSerialBSDClient", {{"IOCalloutDevice", device->slavePath().toStdString()}});
  fake_iokit::RunMainLoop();
  discovery->waitForWalks();
  EXPECT_EQ(session->state().deviceExist, 2);
  EXPECT_TRUE(log.contains("Location ID: 0x1130000"));
  EXPECT_EQ(log.startingWith("GetChildDeviceInfomation:skip ").size(), 2u);
  EXPECT_THAT(log.startingWith("serial port name is "),
              testing::ElementsAre("serial port name is /dev/cu.no-such-port",
                                   "serial port name is " + device->slavePath().toStdString()));
  EXPECT_TRUE(session->channel().isOpen());
  EXPECT_THAT(log.startingWith("GetDeviceInfomation:0x"),
              testing::ElementsAre(
                  testing::HasSubstr("{idProduct = 19794; idVendor = 4617; locationID = 18022400}, "
                                     "{locationID = 17825792})")));
  discovery.reset();
  EXPECT_EQ(fake_iokit::Leaks(), "");
}

}  // namespace
