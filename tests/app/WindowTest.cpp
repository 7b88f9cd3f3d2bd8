#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>
#include <QTimeZone>
#include <QTimer>

#include "DiveProfileView.h"
#include "Library.h"
#include "Localization.h"
#include "RecordingWindow.h"
#include "SimulatedDevice.h"
#include "SystemLog.h"
#include "TestSupport.h"
#include "ViewController.h"
#include "WindowTestSupport.h"

namespace {

class WindowTest : public ::testing::Test {
 protected:
  void SetUp() override {
    window.viewDidLoad();
    window.resize(820, 560);
    window.show();
  }
  bool connectTo(SimulatedDevice &device) {
    window.session().state().deviceExist = 1;
    if (window.session().openSerialPort(device.slavePath(), 9600)) return false;
    return WaitFor(
        [&] {
          return window.session().state().g_serial_port_status == CONNECTED_IDLE &&
                 window.session().state().g_read_index_sequence == 0;
        },
        20000);
  }
  TemporaryHome home;
  LogCapture log;
  BoxAnswerer answerer;
  ViewController window;
};

TEST_F(WindowTest, StartsWithThePowerOnInstructionAndEveryOutletNamed) {
  for (const char *name : {"button_reconnect",
                           "label_com_number",
                           "label_type",
                           "label_version",
                           "label_serial_number",
                           "label_recorded_voice",
                           "label_dive_log",
                           "button_download_voice",
                           "button_download_log",
                           "progressBar_cdc",
                           "comboBox_voice_index",
                           "comboBox_log_index",
                           "label_poweron_message",
                           "pictureBox_set_corvamund2",
                           "comboBox_index_search_range",
                           "label_index_search_range",
                           "tableView_voice_index",
                           "view_voice_index",
                           "tableView_log_index",
                           "view_log_index",
                           "label_voice_index",
                           "label_log_index",
                           "headerView_voice_index",
                           "headerView_log_index"}) {
    EXPECT_NE(Outlet(window, name), nullptr) << name;
  }
  EXPECT_TRUE(Outlet(window, "pictureBox_set_corvamund2")->isVisible());
  EXPECT_EQ(Outlet<QLabel>(window, "label_poweron_message")->text(),
            Localized("label_poweron_message"));
  for (const char *hidden : {"label_recorded_voice", "button_download_voice", "label_dive_log",
                             "button_download_log", "progressBar_cdc", "tableView_voice_index",
                             "tableView_log_index", "comboBox_voice_index"}) {
    EXPECT_FALSE(Outlet(window, hidden)->isVisible()) << hidden;
  }
  EXPECT_EQ(Outlet<QComboBox>(window, "comboBox_index_search_range")->currentText(), "1 month");
  EXPECT_EQ(Outlet<QLabel>(window, "label_serial_number")->text(), "SN.");
  EXPECT_TRUE(Outlet<QLabel>(window, "label_type")->text().isEmpty());
  EXPECT_FALSE(Outlet(window, "button_reconnect")->isEnabled());
  EXPECT_EQ(Outlet(window, "label_voice_index")->parent(),
            Outlet(window, "headerView_voice_index"));
  EXPECT_TRUE(QDir(home.downloads() + "/Mrvtq5dk/voice").exists());
  EXPECT_TRUE(log.contains("viewDidLoad end.."));
}

TEST_F(WindowTest, ControlsFollowThePhasesOfTheSession) {
  sim::Options link;
  link.bytesPerSecond = 400000;  // slow enough to see a clip arrive
  SimulatedDevice device(sim::GenerateContents(4, QDate::currentDate()), link);
  ASSERT_TRUE(connectTo(device));
  // The listing's end reaches the window by two routes (the list and the controls), in
  // either order: wait for both.
  ASSERT_TRUE(WaitFor([&] {
    return Outlet<QTableView>(window, "view_log_index")->isEnabled() &&
           Outlet(window, "button_reconnect")->isEnabled();
  }));
  EXPECT_EQ(Outlet<QLabel>(window, "label_type")->text(), "QM482");
  EXPECT_EQ(Outlet<QLabel>(window, "label_serial_number")->text(), "SN.28417305");
  EXPECT_FALSE(Outlet(window, "pictureBox_set_corvamund2")->isVisible());
  EXPECT_TRUE(Outlet(window, "button_download_voice")->isEnabled());
  EXPECT_TRUE(Outlet(window, "button_reconnect")->isEnabled());
  EXPECT_EQ(Outlet<QTableView>(window, "view_voice_index")->model()->rowCount(), 3);
  EXPECT_FALSE(Outlet<QLabel>(window, "label_voice_index")->text().isEmpty());  // row 0's caption

  // A new range while connected empties both lists at once and reads them again.
  Outlet<QComboBox>(window, "comboBox_index_search_range")->setCurrentIndex(5);
  EXPECT_EQ(Outlet<QTableView>(window, "view_log_index")->model()->rowCount(), 0);
  EXPECT_FALSE(Outlet(window, "comboBox_index_search_range")->isEnabled());
  EXPECT_FALSE(Outlet(window, "button_download_log")->isEnabled());
  ASSERT_TRUE(
      WaitFor([&] { return Outlet(window, "comboBox_index_search_range")->isEnabled(); }, 20000));
  QAbstractItemModel *dives = Outlet<QTableView>(window, "view_log_index")->model();
  EXPECT_EQ(dives->rowCount(), 6);
  EXPECT_EQ(dives->index(0, 1).data().toString(), "18.4 m");   // the deepest point
  EXPECT_EQ(dives->index(3, 2).data().toString(), "-1.5 °C");  // the ice dive's water
  EXPECT_EQ(device.device().commands().count("vi"), 2);

  // A clip download shows its progress, then the completion box.
  Outlet<QPushButton>(window, "button_download_voice")->click();
  EXPECT_TRUE(WaitFor([&] { return Outlet(window, "progressBar_cdc")->isVisible(); }));
  EXPECT_FALSE(Outlet(window, "button_reconnect")->isEnabled());
  ASSERT_TRUE(WaitFor(
      [&] { return answerer.boxes.join(',').contains(Localized("download_complete")); }, 20000));
  EXPECT_TRUE(answerer.boxes.first().startsWith("MrvTq5dk|"));

  // Reconnect clears the identity and greys everything until the device answers again.
  WaitFor([&] { return Outlet(window, "button_reconnect")->isEnabled(); });
  Outlet<QPushButton>(window, "button_reconnect")->click();
  EXPECT_EQ(Outlet<QLabel>(window, "label_serial_number")->text(), "SN.");
  EXPECT_FALSE(Outlet(window, "button_reconnect")->isEnabled());
  EXPECT_FALSE(Outlet(window, "button_download_voice")->isEnabled());
  EXPECT_TRUE(WaitFor([&] { return Outlet<QLabel>(window, "label_type")->text() == "QM482"; }));
}

TEST_F(WindowTest, SaveAllNewMarksEveryRowAndACancelledClipLeavesNothingBehind) {
  sim::Contents contents = sim::GenerateContents(4, QDate::currentDate());
  const QDateTime day = QDateTime(QDate::currentDate().addDays(-3), QTime(1, 0), QTimeZone::utc());
  contents.clips = {{day, 0x010, 0x018, 1},
                    {day.addSecs(600), 0x019, 0x01B, 2},  // under a minute: hidden
                    {day.addSecs(3600), 0x01C, 0x024, 3}};
  sim::Options link;
  link.bytesPerSecond = 500000;  // two seconds a clip: time to cancel one
  SimulatedDevice device(contents, link);
  ASSERT_TRUE(connectTo(device));
  auto *saveAll = Outlet<QPushButton>(window, "button_save_all_new");
  ASSERT_TRUE(WaitFor([&] { return saveAll->isEnabled(); }));
  EXPECT_EQ(Outlet<QLabel>(window, "label_voice_counts")->text(),
            "2 of 3 shown, 2 new, 1 short hidden");
  EXPECT_EQ(Outlet<QLabel>(window, "label_log_counts")->text(), "3 of 7 shown, 3 new");

  // Cancelled while the first clip streams: the dives are saved, the clip is not, and
  // nothing of it is left in the folder.
  saveAll->click();
  auto *jobBar = Outlet<QProgressBar>(window, "progressBar_job");
  EXPECT_TRUE(jobBar->isVisible());
  EXPECT_FALSE(Outlet(window, "button_download_voice")->isEnabled());
  ASSERT_TRUE(WaitFor(
      [&] { return jobBar->value() > 0 && window.session().state().g_voice_received_size > 0; }));
  EXPECT_FALSE(Outlet(window, "progressBar_cdc")->isVisible());
  Outlet<QPushButton>(window, "button_cancel")->click();
  ASSERT_TRUE(
      WaitFor([&] { return answerer.boxes.join(',').contains(Localized("job_cancelled")); }));
  EXPECT_TRUE(answerer.boxes.last().startsWith("Mrvtq5dk|" + Localized("job_saved").arg(3)));
  const QDir voice(home.downloads() + "/Mrvtq5dk/voice");
  EXPECT_EQ(voice.entryList(QDir::Files | QDir::Hidden), QStringList());
  // The device is told the clip is over before anything else is asked of it.
  EXPECT_TRUE(WaitFor([&] {
    const QList<QByteArray> sent = device.device().commands();
    return std::any_of(sent.begin(), sent.end(),
                       [](const QByteArray &command) { return command.startsWith("#cdcwait"); });
  }));
  EXPECT_FALSE(jobBar->isVisible());
  ASSERT_TRUE(WaitFor([&] { return saveAll->isEnabled(); }));  // the clips are still new
  EXPECT_EQ(Outlet<QLabel>(window, "label_log_counts")->text(), "3 of 7 shown, 0 new");

  // Again: only the clips go, and then every row is marked with its file.
  answerer.boxes.clear();
  saveAll->click();
  ASSERT_TRUE(WaitFor([&] { return !answerer.boxes.isEmpty(); }, 20000));
  EXPECT_EQ(answerer.boxes, QStringList{"Mrvtq5dk|" + Localized("job_saved").arg(2)});
  EXPECT_EQ(voice.entryList(QDir::Files | QDir::Hidden).size(), 2);
  for (const char *name : {"view_voice_index", "view_log_index"}) {
    QAbstractItemModel *rows = Outlet<QTableView>(window, name)->model();
    for (int row = 0; row < rows->rowCount(); ++row) {
      EXPECT_TRUE(rows->index(row, 0).data(Qt::ToolTipRole).toString().startsWith("Saved as 20"))
          << name << row;
    }
  }
  EXPECT_FALSE(saveAll->isEnabled());
  EXPECT_TRUE(Outlet(window, "button_download_voice")->isEnabled());
  EXPECT_EQ(device.device().commands().count("vi"), 1);

  // Two rows picked and downloaded in one go: one box for both.
  answerer.boxes.clear();
  QDir(home.downloads() + "/Mrvtq5dk/log").removeRecursively();
  auto *dives = Outlet<QTableView>(window, "view_log_index");
  dives->selectionModel()->select(dives->model()->index(2, 0),
                                  QItemSelectionModel::Select | QItemSelectionModel::Rows);
  Outlet<QPushButton>(window, "button_download_log")->click();
  ASSERT_TRUE(WaitFor([&] { return !answerer.boxes.isEmpty(); }));
  EXPECT_EQ(answerer.boxes, QStringList{"Mrvtq5dk|" + Localized("job_saved").arg(2)});
  EXPECT_EQ(QDir(home.downloads() + "/Mrvtq5dk/log").entryList(QDir::Files).size(), 2);
}

// Once the device is gone the lists show what the library kept, greyed, and stay viewable
// and playable; a second device's library is a choice away.
TEST_F(WindowTest, WithTheDeviceGoneTheLibraryIsBrowsed) {
  sim::Contents contents = OneClipOneDive();
  contents.clips[0].start = contents.dives[0].entry.addSecs(120);  // spoken during the dive
  contents.dives.prepend(
      sim::GenerateDive(6, contents.dives[0].entry.addDays(-2), 30, 10, 1500, 270, 230));
  contents.totalDives = 2;
  Library().recordDive({"QM482", "11110000"},
                       {9, contents.dives[1].entry.addDays(-9), sim::DivePage(contents.dives[1])});
  auto device = std::make_unique<SimulatedDevice>(contents);
  ASSERT_TRUE(connectTo(*device));
  auto *saveAll = Outlet<QPushButton>(window, "button_save_all_new");
  ASSERT_TRUE(WaitFor([&] { return saveAll->isEnabled(); }));
  saveAll->click();
  ASSERT_TRUE(WaitFor([&] { return !answerer.boxes.isEmpty(); }, 20000));
  device.reset();  // unplugged

  ASSERT_TRUE(WaitFor([&] {
    return Outlet<QLabel>(window, "label_status")->text() ==
           Localized("status_browsing_library").arg("QM482 SN.28417305");
  }));
  auto *dives = Outlet<QTableView>(window, "view_log_index");
  auto *clips = Outlet<QTableView>(window, "view_voice_index");
  ASSERT_EQ(dives->model()->rowCount(), 2);
  ASSERT_EQ(clips->model()->rowCount(), 1);
  EXPECT_TRUE(dives->isEnabled());
  EXPECT_TRUE(dives->model()->index(0, 0).data(Qt::ForegroundRole).isValid());  // greyed
  EXPECT_TRUE(clips->model()
                  ->index(0, 0)
                  .data(Qt::ToolTipRole)
                  .toString()
                  .startsWith(Localized("row_not_on_device") + "\nSaved as 20"));
  dives->selectRow(0);
  EXPECT_TRUE(window.findChild<DiveProfileView *>()->hasProfile());
  EXPECT_EQ(window.findChild<DiveProfileView *>()->clipMarks(), 1);
  clips->selectRow(0);
  EXPECT_EQ(Outlet<QLabel>(window, "playTitle")->text(), clips->model()->index(0, 0).data());

  // The picked dive goes to the logbook with its clip, under the suggested name.
  const QString logbook = home.downloads() + "/Mrvtq5dk/Mrvtq5dk-28417305-" +
                          QDate::currentDate().toString(Qt::ISODate) + ".uddf";
  window.chooseExportFile = [&](const QString &suggested) {
    EXPECT_EQ(suggested, logbook);
    return suggested;
  };
  answerer.boxes.clear();
  answerer.button = Localized("export_selected");
  Outlet<QPushButton>(window, "button_export_logbook")->click();
  ASSERT_EQ(answerer.boxes.size(), 2);
  EXPECT_EQ(answerer.boxes[1],
            "MrvTq5dk|" + Localized("export_written").arg(1).arg(1).arg(logbook));
  EXPECT_TRUE(QFileInfo(logbook).size() > 1000);

  auto *chooser = Outlet<QComboBox>(window, "comboBox_library_device");
  ASSERT_TRUE(chooser->isVisible());
  ASSERT_EQ(chooser->count(), 2);
  chooser->activated(1);
  EXPECT_EQ(dives->model()->rowCount(), 1);
  EXPECT_EQ(clips->model()->rowCount(), 0);
  EXPECT_EQ(Outlet<QLabel>(window, "label_status")->text(),
            Localized("status_browsing_library").arg("QM482 SN.11110000"));
}

TEST_F(WindowTest, RangeChangeWithoutADeviceOnlyStoresTheRange) {
  Outlet<QComboBox>(window, "comboBox_index_search_range")->setCurrentIndex(3);
  const QDate today = QDate::currentDate();
  EXPECT_EQ(window.session().state().g_index_search_date,
            std::max(20220101, (today.year() - 1) * 10000 + today.month() * 100 + today.day()));
  EXPECT_FALSE(log.contains("writeString:vi\r\n"));
  EXPECT_FALSE(log.contains("writeString:serialFileDescripter -1"));
}

TEST_F(WindowTest, BoxesHaveTheirTwoTitlesAndTheCloseVetoHoldsDuringAClip) {
  window.messageBox("hello");
  EXPECT_EQ(answerer.boxes, QStringList{"MrvTq5dk|hello"});
  EXPECT_EQ(window.confirmBox("sure?"), 1000);
  EXPECT_EQ(answerer.boxes.last(), "Mrvtq5dk|sure?");
  answerer.button = Localized("Cancel");
  EXPECT_EQ(window.confirmBox("sure?"), 1001);

  SessionState &state = window.session().state();
  state.g_serial_port_status = CONNECTED_IDLE;
  state.deviceExist = 1;
  state.g_voice_download_active = 1;
  EXPECT_FALSE(window.close());
  EXPECT_TRUE(window.isVisible());
  state.deviceExist = 0;
  EXPECT_TRUE(window.close());
}

// Start-up refusals end the process: the test runs itself again as a child for each.
TEST(WindowStartUp, VoiceFolderThatCannotBeMadeEndsWithStatus1) {
  if (IsChildRun()) {
    BoxAnswerer answerer;
    answerer.echo = true;
    LogCapture log(true);
    ViewController window;
    window.viewDidLoad();  // ends the process with status 1
    std::_Exit(kChildWentOn);
  }
  TemporaryHome home;
  ASSERT_TRUE(QDir().mkpath(home.downloads()));
  WriteFile(home.downloads() + "/Mrvtq5dk", "not a folder");
  const ProgramRun child =
      RunChild("WindowStartUp.VoiceFolderThatCannotBeMadeEndsWithStatus1", home.path());
  EXPECT_EQ(child.status, 1);
  const QString &out = child.out, &err = child.err;
  EXPECT_TRUE(out.contains("box:MrvTq5dk|voice folder create error!")) << qPrintable(out + err);
  EXPECT_TRUE(err.contains("create voice folder Error."));
  EXPECT_FALSE(err.contains("create logs folder Error."));
}

}  // namespace
