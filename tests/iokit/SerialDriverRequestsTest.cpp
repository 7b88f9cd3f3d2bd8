// The serial channel as built for macOS, where the driver takes the speed and the receive
// latency by request, opening a virtual USB device's serial node whose driver answers them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <IOKit/serial/ioss.h>

#include "SerialChannel.h"
#include "SystemLog.h"
#include "VirtualUsb.h"

namespace {

MATCHER_P2(IsRequest, request, value, "") {
  return arg.request == static_cast<unsigned long>(request) && arg.value == uint64_t(value);
}

TEST(SerialDriverRequestsTest, SpeedThenLatencyByRequestAndRefusalsCloseThePort) {
  VirtualUsb usb;
  ASSERT_TRUE(VirtualUsb::inMockEnvironment()) << "run under umockdev-wrapper";
  const QString node = usb.add("1-1", 0x1209, 0x4D52).devnode;
  ASSERT_FALSE(node.isEmpty()) << usb.error().toStdString();
  LogCapture log;
  SerialChannel channel;
  usb.answerDriverRequest(IOSSIOSPEED);
  usb.answerDriverRequest(IOSSDATALAT);
  EXPECT_EQ(channel.openPort(node, 9600), std::nullopt);
  EXPECT_THAT(usb.driverRequests(),
              testing::ElementsAre(IsRequest(IOSSIOSPEED, 9600), IsRequest(IOSSDATALAT, 3)));

  usb.answerDriverRequest(IOSSDATALAT, EIO);
  EXPECT_EQ(channel.openPort(node, 9600), "Error: coudln't set serial latency");
  EXPECT_FALSE(channel.isOpen());
  EXPECT_TRUE(log.contains("serial port open error:Error: coudln't set serial latency no:5"));
  usb.answerDriverRequest(IOSSIOSPEED, EINVAL);
  EXPECT_EQ(channel.openPort(node, 9600), "Error: Baud Rate out of bounds");
  EXPECT_TRUE(log.contains("serial port open error:Error: Baud Rate out of bounds no:22"));
}

}  // namespace
