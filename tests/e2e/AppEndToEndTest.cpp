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

// Start-up refusals end the process with status 1: a voice folder that cannot be made, and a
// device attached before the program starts (counted, never opened). The test runs itself
// again as a child for each, with a home of its own.
TEST(AppOnVirtualUsb, StartUpRefusalsEndWithStatus1) {
  if (qEnvironmentVariableIsSet("MRVTQ5DK_CHILD")) {
    BoxAnswerer answerer;
    answerer.echo = true;
    LogCapture log(true);
    ViewController window;
    window.start();  // where a folder cannot be made, the process ends here
    window.show();
    window.afterShown();  // and here, with a device attached before start
    std::_Exit(70);       // went on: not 1, which a failed test in the child also gives
  }
  const auto child = [](const QString &home) {
    return RunProcess(
        QCoreApplication::applicationFilePath(),
        {"--gtest_filter=AppOnVirtualUsb.StartUpRefusalsEndWithStatus1"},
        {{"MRVTQ5DK_CHILD", "1"}, {"HOME", home}, {"XDG_CONFIG_HOME", home + "/.config"}});
  };
  TemporaryHome blocked;
  ASSERT_TRUE(QDir().mkpath(blocked.downloads()));
  WriteFile(blocked.downloads() + "/Mrvtq5dk", "not a folder");
  const ProgramRun folder = child(blocked.path());
  EXPECT_EQ(folder.status, 1);
  EXPECT_TRUE(folder.out.contains("box:MrvTq5dk|voice folder create error!"))
      << qPrintable(folder.out + folder.err);
  EXPECT_TRUE(folder.err.contains("create voice folder Error."));
  EXPECT_FALSE(folder.err.contains("create logs folder Error."));

  VirtualUsb usb;
  usb.add("1-1", kCorvamundVendorId, kCorvamundProductId);
  TemporaryHome home;
  const ProgramRun attached = child(home.path());
  EXPECT_EQ(attached.status, 1);
  EXPECT_TRUE(attached.out.contains("box:MrvTq5dk|" + Localized("corvamund_already_exist")))
      << qPrintable(attached.out + attached.err);
  EXPECT_TRUE(attached.err.contains("Device added.")) << qPrintable(attached.err);
  EXPECT_FALSE(attached.err.contains("serial port name is"));
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
  // The session timer ticks once a second, and after each reply a whole tick passes before
  // the next command: the device needs the pause. So each goes out two ticks after the last.
  EXPECT_GE(at[1] - at[0], 1500);
  EXPECT_GE(at[2] - at[1], 1500);
}

}  // namespace
