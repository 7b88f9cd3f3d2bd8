// The whole application, offscreen, on a virtual USB bus: the simulator sits behind the tty node of
// a fake device that is plugged in as a diver would. The window's own flows are tested in
// tests/app; here the program is put together with the bus.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>

#include "Localization.h"
#include "SimulatedDevice.h"
#include "SystemLog.h"
#include "TestSupport.h"
#include "ViewController.h"
#include "VirtualUsb.h"
#include "WindowTestSupport.h"

namespace {

bool ThreadAlive(qint64 pid, const char *name) {
  for (const QFileInfo &task : QDir(QStringLiteral("/proc/%1/task").arg(pid))
                                   .entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot)) {
    QFile comm(task.filePath() + "/comm");  // a thread may end between the listing and here
    if (comm.open(QIODevice::ReadOnly) && comm.readAll().trimmed() == name) return true;
  }
  return false;
}

// A device attached before the program starts is counted, never opened, and refused.
TEST(AppOnVirtualUsb, DeviceAttachedBeforeStartIsRefusedWithStatus1) {
  if (IsChildRun()) {
    BoxAnswerer answerer;
    answerer.echo = true;
    LogCapture log(true);
    ViewController window;
    window.start();
    window.show();
    window.afterShown();  // ends the process with status 1
    std::_Exit(kChildWentOn);
  }
  VirtualUsb usb;
  usb.add("1-1", kCorvamundVendorId, kCorvamundProductId);
  TemporaryHome home;
  const ProgramRun child =
      RunChild("AppOnVirtualUsb.DeviceAttachedBeforeStartIsRefusedWithStatus1", home.path());
  EXPECT_EQ(child.status, 1);
  EXPECT_TRUE(child.out.contains("box:MrvTq5dk|" + Localized("corvamund_already_exist")))
      << qPrintable(child.out + child.err);
  EXPECT_TRUE(child.err.contains("Device added.")) << qPrintable(child.err);
  EXPECT_FALSE(child.err.contains("serial port name is"));
}

// The built program, untouched and offscreen: what the device sees after a plug-in, and when.
TEST(AppBinaryOnVirtualUsb, PlugInAfterStartIdentifiesThenListsInOrderAtTheTicksPace) {
  VirtualUsb usb;
  TemporaryHome home;
  QByteArray log;
  QProcess app;  // killed when it goes
  QObject::connect(&app, &QProcess::readyReadStandardError,
                   [&] { log += app.readAllStandardError(); });  // so that the pipe never fills
  app.start(MRVTQ5DK_APP_PATH, {});
  ASSERT_TRUE(WaitFor([&] { return log.contains("viewDidLoad end.."); }, 10000)) << log.data();
  // Plugged in before the devices attached at start are counted, it would count among them.
  ASSERT_TRUE(WaitFor([&] { return !ThreadAlive(app.processId(), kFirstScanThreadName); }, 10000));

  const VirtualUsb::Device plugged = usb.plugIn("1-1");
  const auto device =
      std::make_unique<sim::SimulatedDevice>(sim::OneClipOneDive(), sim::Options{}, plugged.master);
  ASSERT_TRUE(WaitFor([&] { return device->device().commands().count("#detail") >= 2; }, 30000))
      << log.data();

  const QList<QByteArray> wire = device->device().commands();
  const QList<int64_t> at = device->device().commandTimesMs();
  ASSERT_GE(wire.size(), 7) << wire.join(' ').constData();
  EXPECT_EQ(wire.mid(0, 7),
            (QList<QByteArray>{"#kind", "#detail", "#gser", "vi", "lh", "lp000000", "#detail"}));
  // The handshake advances one step per second of the session timer.
  EXPECT_GE(at[1] - at[0], 900);
  EXPECT_GE(at[2] - at[1], 900);
}

}  // namespace
