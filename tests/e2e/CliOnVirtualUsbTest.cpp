// mrvtq5dk-cli finding the device on a virtual USB bus, as a diver runs it: no --port.
#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "SimulatedDevice.h"
#include "TestSupport.h"
#include "VirtualUsb.h"

namespace {

TEST(CliOnVirtualUsb, FindsThePluggedInDeviceAndSaysWhenThereIsNone) {
  VirtualUsb usb;
  TemporaryHome home;  // the library lives there
  QTemporaryDir output;
  const auto run = [&](const QStringList &verb) {
    return RunProcess(MRVTQ5DK_CLI_PATH, verb + QStringList{"--output", output.path()});
  };
  const ProgramRun nothing = run({"list"});
  EXPECT_EQ(nothing.status, 3);
  EXPECT_TRUE(nothing.err.contains("no QM482 on the USB bus")) << qPrintable(nothing.err);

  const VirtualUsb::Device plugged = usb.plugIn("1-1");
  ASSERT_GE(plugged.master, 0) << qPrintable(usb.error());
  sim::SimulatedDevice device(sim::GenerateContents(9, QDate::currentDate()), {}, plugged.master);
  const ProgramRun list = run({"list"});
  EXPECT_EQ(list.status, 0) << qPrintable(list.err);
  EXPECT_TRUE(list.out.contains("SN.28417305"));
  EXPECT_TRUE(list.out.contains("Dive logs (6)"));
}

}  // namespace
