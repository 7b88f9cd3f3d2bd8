// The whole application, offscreen, on a virtual USB bus: the simulator sits behind the
// tty node of a fake device that is plugged in and pulled out as a diver would.
#include <gtest/gtest.h>

#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QTableView>

#include "AppProcess.h"
#include "DiveLogCsv.h"
#include "Localization.h"
#include "RecordingWindow.h"
#include "SimContents.h"
#include "SimulatedDevice.h"
#include "SystemLog.h"
#include "TestSupport.h"
#include "ViewController.h"
#include "VirtualUsb.h"
#include "WaveFile.h"
#include "WindowTestSupport.h"

namespace {

QString OnlyFileIn(const QString &folder) {
  const QStringList files = QDir(folder).entryList(QDir::Files);
  EXPECT_EQ(files.size(), 1) << qPrintable(files.join(','));
  return files.isEmpty() ? QString() : folder + "/" + files.first();
}

TEST(AppOnVirtualUsb, PluggedInDeviceIsListedDownloadedAndNoticedWhenUnplugged) {
  VirtualUsb usb;
  TemporaryHome home;
  LogCapture log;
  BoxAnswerer answerer;
  ViewController window;
  window.viewDidLoad();
  window.show();
  window.viewDidAppear();
  ASSERT_TRUE(answerer.boxes.isEmpty());

  const sim::Contents contents = OneClipOneDive();
  const VirtualUsb::Device plugged = usb.plugIn("1-1");
  const auto device = std::make_unique<SimulatedDevice>(contents, sim::Options{}, plugged.master);
  ASSERT_TRUE(WaitFor([&] { return Outlet(window, "view_log_index")->isEnabled(); }, 20000));
  EXPECT_EQ(Outlet<QLabel>(window, "label_type")->text(), "QM482");
  EXPECT_EQ(Outlet<QLabel>(window, "label_serial_number")->text(), "SN.28417305");
  EXPECT_EQ(Outlet<QTableView>(window, "view_voice_index")->model()->rowCount(), 1);
  EXPECT_EQ(Outlet<QTableView>(window, "view_log_index")->model()->rowCount(), 1);
  WaitFor([] { return false; }, 300);  // the answer to the listing's closing "#detail"

  const QString downloads = home.downloads() + "/Mrvtq5dk";
  Outlet<QPushButton>(window, "button_download_voice")->click();
  ASSERT_TRUE(WaitFor(
      [&] { return answerer.boxes.join(',').contains(Localized("download_complete")); }, 30000));
  const QByteArray audio = sim::ClipAudio(contents.clips[0], contents.ringFirst, contents.ringLast);
  EXPECT_EQ(ReadFile(OnlyFileIn(downloads + "/voice")), WaveHeader(uint64_t(audio.size())) + audio);

  WaitFor([&] { return Outlet(window, "button_download_log")->isEnabled(); }, 5000);
  WaitFor([] { return false; }, 1200);  // a tick for the "#detail" that ended the clip
  Outlet<QPushButton>(window, "button_download_log")->click();
  ASSERT_TRUE(
      WaitFor([&] { return QDir(downloads + "/log").entryList(QDir::Files).size() == 1; }, 20000));
  const QByteArray page = sim::DivePage(contents.dives[0]);
  QTemporaryDir expected;
  ASSERT_TRUE(DiveLogCsvSave(expected.filePath("dive.csv"), &page));
  EXPECT_TRUE(WaitFor(
      [&] {
        return ReadFile(OnlyFileIn(downloads + "/log")) == ReadFile(expected.filePath("dive.csv"));
      },
      5000));

  usb.unplug(plugged);
  EXPECT_TRUE(WaitFor(
      [&] {
        return window.session().state().g_serial_port_status == DISCONNECTED &&
               !Outlet(window, "button_download_voice")->isEnabled() &&
               Outlet(window, "label_com_number")->isVisible();
      },
      5000));
  EXPECT_TRUE(log.contains("Device removed."));
}

// A device attached before the program starts is counted, never opened, and refused.
TEST(AppOnVirtualUsb, DeviceAttachedBeforeStartIsRefusedWithStatus1) {
  if (IsChildRun()) {
    BoxAnswerer answerer;
    answerer.echo = true;
    LogCapture log(true);
    ViewController window;
    window.viewDidLoad();
    window.show();
    window.viewDidAppear();  // ends the process with status 1
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

// The built program, untouched: what the device sees after a plug-in, and when.
TEST(AppBinaryOnVirtualUsb, PlugInAfterStartIdentifiesThenListsInOrderAtTheTicksPace) {
  VirtualUsb usb;
  TemporaryHome home;
  AppProcess app(MRVTQ5DK_APP_PATH);
  ASSERT_TRUE(app.waitUntilReady()) << app.log().data();

  const VirtualUsb::Device plugged = usb.plugIn("1-1");
  const auto device =
      std::make_unique<SimulatedDevice>(OneClipOneDive(), sim::Options{}, plugged.master);
  ASSERT_TRUE(WaitFor([&] { return device->device().commands().count("#detail") >= 2; }, 30000))
      << app.log().data();

  const QList<QByteArray> wire = device->device().commands();
  const QList<int64_t> at = device->device().commandTimesMs();
  ASSERT_GE(wire.size(), 7) << wire.join(' ').constData();
  EXPECT_EQ(wire.mid(0, 5), (QList<QByteArray>{"#kind", "#detail", "#gser", "vi", "lh"}));
  EXPECT_EQ(wire[5], "lp000000");
  EXPECT_EQ(wire[6], "#detail");
  // The handshake advances one step per second of the session timer.
  EXPECT_GE(at[1] - at[0], 900);
  EXPECT_GE(at[2] - at[1], 900);
}

}  // namespace
