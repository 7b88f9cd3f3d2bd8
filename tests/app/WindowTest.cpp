#include <gtest/gtest.h>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>
#include <QTimeZone>

#include "DiveProfileView.h"
#include "Library.h"
#include "LibraryShelf.h"
#include "Localization.h"
#include "ShownClock.h"
#include "SimulatedDevice.h"
#include "SystemLog.h"
#include "TestSupport.h"
#include "ViewController.h"
#include "WindowTestSupport.h"

namespace {

// On a small screen a dive is picked: the window keeps its size, and each list four rows.
void ExpectDivePickedOnSmallScreen(ViewController &window) {
  window.resize(800, 560);
  auto *dives = Outlet<QTableView>(window, "view_log_index");
  dives->selectRow(0);
  QApplication::processEvents();
  EXPECT_EQ(std::pair(window.width(), window.height()), std::pair(800, 560));
  for (QTableView *list : {Outlet<QTableView>(window, "view_voice_index"), dives})
    EXPECT_GE(list->viewport()->height(), 4 * list->verticalHeader()->defaultSectionSize())
        << qPrintable(list->objectName());
}

class WindowTest : public ::testing::Test {
 protected:
  void SetUp() override {
    window.start();
    window.resize(820, 560);
    window.show();
  }
  // Four days of dives and three clips: one spoken during the newest dive, one under a
  // minute, one three days ago. The library already knows a dive of a second device.
  void plugInAndList() {
    plugIn();
    // The listing's end reaches the window by two routes, in either order: wait for both.
    ASSERT_TRUE(WaitFor([&] { return saveAll->isEnabled() && reconnect->isEnabled(); }, 30000));
  }
  void plugIn(sim::Options link = {}) {
    sim::Contents contents = sim::GenerateContents(4, QDate::currentDate());
    const QDateTime day =
        QDateTime(QDate::currentDate().addDays(-3), QTime(1, 0), QTimeZone::utc());
    newest = contents.dives.last().entry;
    contents.clips = {{newest.addSecs(120), 0x010, 0x018, 1},  // spoken during the dive
                      {day.addSecs(600), 0x019, 0x01B, 2},     // under a minute: hidden
                      {day.addSecs(3600), 0x01C, 0x024, 3}};
    link.bytesPerSecond = 500000;  // two seconds a clip: time to see it arrive and cancel it
    device = std::make_unique<sim::SimulatedDevice>(contents, link);
    Library().recordDive({"QM482", "11110000"},
                         {9, newest.addDays(-9), sim::DivePage(contents.dives[5])});
    window.session().state().deviceExist = 1;
    ASSERT_EQ(window.session().openSerialPort(device->slavePath(), 9600), std::nullopt);
  }
  QString text(const char *label) { return Outlet<QLabel>(window, label)->text(); }
  void click(const char *button) { Outlet<QPushButton>(window, button)->click(); }
  // The line a box that tells of saved files ends with: the folder they went to.
  QString folderLine(const char *folder) {
    return "\n" + Localized("saved_folder", 1).arg(home.downloads() + "/Mrvtq5dk/" + folder);
  }
  TemporaryHome home;
  LogCapture log;
  BoxAnswerer answerer;
  ViewController window;
  QPushButton *saveAll = Outlet<QPushButton>(window, "button_save_all_new");
  QWidget *reconnect = Outlet(window, "button_reconnect");
  QTableView *clips = Outlet<QTableView>(window, "view_voice_index");
  QTableView *dives = Outlet<QTableView>(window, "view_log_index");
  std::unique_ptr<sim::SimulatedDevice> device;
  QDateTime newest;  // the newest dive's entry, on the device's clock
};

// Listed with the identity and counts; a new range empties both lists and reads them again;
// one clip fetched, the right one, told in one box.
TEST_F(WindowTest, ListedThenRangedThenOneClipFetched) {
  plugInAndList();
  EXPECT_EQ(text("label_type"), "QM482");
  EXPECT_EQ(text("label_serial_number"), "SN.28417305");
  EXPECT_FALSE(Outlet(window, "pictureBox_set_corvamund2")->isVisible());
  EXPECT_EQ(text("label_voice_counts"), "2 of 3 shown, 2 new, 1 short hidden");
  EXPECT_EQ(text("label_log_counts"), "3 of 7 shown, 3 new");
  // The first clip comes picked, ready to download or play; the caption names the clock.
  const auto row = [](QTableView *list, int r) {
    return list->model()->index(r, 0).data().toString();
  };
  EXPECT_EQ(text("label_voice_index"), row(clips, 0) + "   (Japan time)");
  // Every time on one clock: the clip spoken two minutes into the newest dive is listed two
  // minutes after it, its length the audio it holds (nine blocks); then on the computer's.
  const auto on = [](ShownClock clock, const QDateTime &t) {
    return OnClock(t, clock).toString("yyyy/MM/dd HH:mm");
  };
  EXPECT_EQ(row(clips, 0), on(ShownClock::Japan, newest.addSecs(120)) + "  1:13");
  EXPECT_EQ(row(dives, 0).left(16), on(ShownClock::Japan, newest));
  QTimer::singleShot(100, [] {
    QWidget *dialog = QApplication::activeModalWidget();
    for (auto *choice : dialog->findChildren<QRadioButton *>())
      if (choice->text() == ClockChoice(ShownClock::Computer)) choice->click();
    dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
  });
  click("button_preferences");
  const auto local = [](const QDateTime &t) {
    return t.toLocalTime().toString("yyyy/MM/dd HH:mm");
  };
  EXPECT_EQ(row(clips, 0).left(16), local(newest.addSecs(120)));
  EXPECT_EQ(row(dives, 0).left(16), local(newest));
  EXPECT_TRUE(text("label_voice_index").endsWith("(this computer's time)"));

  // A new range while connected empties both lists at once and reads them again.
  auto *range = Outlet<QComboBox>(window, "comboBox_index_search_range");
  range->setCurrentIndex(5);
  EXPECT_EQ(dives->model()->rowCount(), 0);
  EXPECT_FALSE(range->isEnabled());
  EXPECT_FALSE(Outlet(window, "button_download_log")->isEnabled());
  ASSERT_TRUE(WaitFor([&] { return range->isEnabled(); }, 20000));
  ASSERT_EQ(dives->model()->rowCount(), 6);
  EXPECT_EQ(dives->model()->index(3, 2).data().toString(), "-1.4 °C");  // the ice dive's water

  // The second row shown is the third clip: the hidden one is not fetched in its place.
  clips->selectRow(1);
  click("button_download_voice");
  EXPECT_TRUE(WaitFor([&] { return Outlet(window, "progressBar_cdc")->isVisible(); }));
  EXPECT_FALSE(reconnect->isEnabled());
  ASSERT_TRUE(WaitFor(
      [&] { return answerer.boxes.join(',').contains(Localized("download_complete")); }, 20000));
  EXPECT_EQ(answerer.boxes.size(), 1) << qPrintable(answerer.boxes.join('\n'));  // none a listing
  const QDir voice(home.downloads() + "/Mrvtq5dk/voice");
  const QStringList one = voice.entryList(QDir::Files | QDir::Hidden);
  ASSERT_EQ(one.size(), 1);
  EXPECT_TRUE(one[0].contains("_02-00_")) << qPrintable(one[0]);  // the third clip's time
  EXPECT_TRUE(answerer.boxes[0].endsWith(one[0] + folderLine("voice")));
  auto *position = Outlet(window, "playPosition");
  EXPECT_TRUE(position->isEnabled());  // the player takes the clip just saved

  // The pin of a clip not saved yet picks its row, shows its progress in the player, with no
  // box, and leaves it ready to play.
  window.findChild<DiveProfileView *>()->clipClicked(0);
  EXPECT_EQ(clips->selectionModel()->selectedRows().value(0).row(), 0);
  EXPECT_TRUE(WaitFor([&] { return text("playTitle").contains(": downloading, "); }));
  ASSERT_TRUE(WaitFor([&] { return position->isEnabled(); }, 20000));
  EXPECT_EQ(voice.entryList(QDir::Files).size(), 2);
  EXPECT_EQ(answerer.boxes.size(), 1);
}

// Everything new saved, once cancelled mid-clip; then two rows picked and downloaded in one
// go.
TEST_F(WindowTest, SaveAllNewCancelledThenWholeThenTwoRowsInOneGo) {
  plugInAndList();
  SessionState &state = window.session().state();
  const QDir voice(home.downloads() + "/Mrvtq5dk/voice");
  // Cancelled while a clip streams: the dives are saved, the clip under way is not, and
  // nothing of it is left in the folder.
  saveAll->click();
  auto *jobBar = Outlet<QProgressBar>(window, "progressBar_job");
  EXPECT_TRUE(jobBar->isVisible());
  EXPECT_FALSE(Outlet(window, "button_download_voice")->isEnabled());
  ASSERT_TRUE(WaitFor([&] { return jobBar->value() > 0 && state.clipReceived > 0; }));
  // The item under way is named as its list names it, on the same clock.
  EXPECT_TRUE(text("label_job").contains(clips->model()->index(0, 0).data().toString()));
  EXPECT_FALSE(Outlet(window, "progressBar_cdc")->isVisible());
  click("button_cancel");
  ASSERT_TRUE(
      WaitFor([&] { return answerer.boxes.join(',').contains(Localized("job_cancelled")); }));
  EXPECT_TRUE(answerer.boxes.last().startsWith("Mrvtq5dk|" + Localized("job_saved", 3) +
                                               folderLine("log")));
  EXPECT_TRUE(voice.entryList(QDir::Files | QDir::Hidden).isEmpty());
  EXPECT_FALSE(jobBar->isVisible());
  ASSERT_TRUE(WaitFor([&] { return saveAll->isEnabled(); }));  // the clips are still new
  EXPECT_EQ(text("label_log_counts"), "3 of 7 shown, 0 new");

  // Again: only the clips go, and then every row is marked with its file.
  answerer.boxes.clear();
  saveAll->click();
  ASSERT_TRUE(WaitFor([&] { return !answerer.boxes.isEmpty(); }, 20000));
  EXPECT_EQ(answerer.boxes,
            QStringList{"Mrvtq5dk|" + Localized("job_saved", 2) + folderLine("voice")});
  EXPECT_EQ(voice.entryList(QDir::Files | QDir::Hidden).size(), 2);
  for (const char *name : {"view_voice_index", "view_log_index"}) {
    QAbstractItemModel *rows = Outlet<QTableView>(window, name)->model();
    for (int row = 0; row < rows->rowCount(); ++row) {
      EXPECT_TRUE(rows->index(row, 0).data(Qt::ToolTipRole).toString().startsWith("Saved as 20"))
          << name << row;
    }
  }
  EXPECT_FALSE(saveAll->isEnabled());
  EXPECT_EQ(device->device().commands().count("vi"), 1);  // nothing listed again

  // Two rows picked and downloaded in one go: one box for both.
  answerer.boxes.clear();
  QDir(home.downloads() + "/Mrvtq5dk/log").removeRecursively();
  dives->selectionModel()->select(dives->model()->index(2, 0),
                                  QItemSelectionModel::Select | QItemSelectionModel::Rows);
  click("button_download_log");
  ASSERT_TRUE(WaitFor([&] { return !answerer.boxes.isEmpty(); }));
  EXPECT_EQ(answerer.boxes,
            QStringList{"Mrvtq5dk|" + Localized("job_saved", 2) + folderLine("log")});
  EXPECT_EQ(QDir(home.downloads() + "/Mrvtq5dk/log").entryList(QDir::Files).size(), 2);
}

// Once the device is gone its lists show what the library kept in the period, greyed,
// viewable and playable, in a small window as in one started without the device; every dive
// goes to the logbook unless several are picked; a second device's library is a choice away,
// and a longer period shows its older clip.
TEST_F(WindowTest, OnceTheDeviceIsGoneTheListsShowTheLibrary) {
  // The second device's library keeps a clip of six weeks ago, with its file.
  const QDateTime old = QDateTime::currentDateTimeUtc().addDays(-42);
  const QString key = old.toString("yyyyMMddHHmmss"), wav = home.path() + "/old.wav";
  WriteFile(wav, QByteArray(2000, 0));
  Library kept;
  kept.recordClip({"QM482", "11110000"}, {key, old.toString("yyMMdd-HHmmss"), old});
  kept.recordSaved({"QM482", "11110000"}, ItemKind::Clip, key, wav);
  plugInAndList();
  saveAll->click();
  ASSERT_TRUE(WaitFor([&] { return !answerer.boxes.isEmpty(); }, 20000));
  device.reset();  // unplugged
  ASSERT_TRUE(WaitFor([&] {
    return text("label_status") == Localized("status_browsing_library").arg("QM482 SN.28417305");
  }));
  ASSERT_EQ(dives->model()->rowCount(), 3);  // the month's dives, saved or not
  EXPECT_EQ(text("label_log_counts"), "3 of 7 in the library");
  ASSERT_EQ(clips->model()->rowCount(), 2);
  EXPECT_TRUE(dives->isEnabled());
  EXPECT_TRUE(dives->model()->index(0, 0).data(Qt::ForegroundRole).isValid());  // greyed
  const QString tip = clips->model()->index(0, 0).data(Qt::ToolTipRole).toString();
  EXPECT_TRUE(tip.startsWith(Localized("row_not_on_device") + "\nSaved as 20"));
  ExpectDivePickedOnSmallScreen(window);
  EXPECT_TRUE(window.findChild<DiveProfileView *>()->hasProfile());
  EXPECT_EQ(window.findChild<DiveProfileView *>()->clipMarks(), 1);
  clips->selectRow(0);
  EXPECT_EQ(text("playTitle"), clips->model()->index(0, 0).data());

  // The dive picked as the window always picks one: every dive goes, unasked, under the
  // suggested name; two picked: the diver is asked, and they go with their clip.
  const QString logbook = home.downloads() + "/Mrvtq5dk/Mrvtq5dk-28417305-" +
                          QDate::currentDate().toString(Qt::ISODate) + ".uddf";
  window.chooseExportFile = [&](const QString &suggested) {
    return suggested == logbook ? suggested : QString();
  };
  answerer.boxes.clear();
  answerer.button = Localized("export_selected");
  click("button_export_logbook");
  // Only the export's box: a request put off until the line was quiet never meets the
  // unplugged port and says the power is off.
  // Written away from the UI thread: the button waits for it.
  EXPECT_EQ(text("label_status"), Localized("status_exporting"));
  EXPECT_FALSE(Outlet<QPushButton>(window, "button_export_logbook")->isEnabled());
  ASSERT_TRUE(WaitFor([&] { return !answerer.boxes.isEmpty(); }));
  ASSERT_EQ(answerer.boxes.size(), 1) << qPrintable(answerer.boxes.join('\n'));
  EXPECT_EQ(answerer.boxes[0], "MrvTq5dk|7 dives and 1 voice clip written to " + logbook + ".");
  dives->selectionModel()->select(dives->model()->index(1, 0),
                                  QItemSelectionModel::Select | QItemSelectionModel::Rows);
  click("button_export_logbook");
  ASSERT_TRUE(WaitFor([&] { return answerer.boxes.size() == 3; }));
  EXPECT_TRUE(Outlet<QPushButton>(window, "button_export_logbook")->isEnabled());
  EXPECT_EQ(answerer.boxes[2], "MrvTq5dk|2 dives and 1 voice clip written to " + logbook + ".");

  auto *chooser = Outlet<QComboBox>(window, "comboBox_library_device");
  ASSERT_TRUE(chooser->isVisible());
  ASSERT_EQ(chooser->count(), 2);
  chooser->activated(1);
  ASSERT_TRUE(WaitFor([&] { return dives->model()->rowCount() == 1; }));
  EXPECT_EQ(clips->model()->rowCount(), 0);  // older than the month
  Outlet<QComboBox>(window, "comboBox_index_search_range")->setCurrentIndex(1);
  ASSERT_TRUE(WaitFor([&] { return clips->model()->rowCount() == 1; }));
  EXPECT_EQ(text("label_status"), Localized("status_browsing_library").arg("QM482 SN.11110000"));

  // Started again without the device, in Japanese: the library under the plug-in instruction.
  InstallStringTables(QLocale(QLocale::Japanese));
  ViewController again;
  again.start();
  again.show();
  ASSERT_TRUE(WaitFor([&] { return Outlet<QTableView>(again, "view_log_index")->isEnabled(); }));
  ExpectDivePickedOnSmallScreen(again);
  InstallStringTables(QLocale(QLocale::English));
}

// Without a device: the power-on instruction, a range that is only stored, Reconnect once a
// device stopped answering, and the close veto, which holds only while a clip downloads.
TEST_F(WindowTest, WithoutADeviceTheRangeIsOnlyStoredAndTheCloseVetoHoldsDuringAClip) {
  EXPECT_TRUE(Outlet(window, "pictureBox_set_corvamund2")->isVisible());
  EXPECT_FALSE(Outlet(window, "button_reconnect")->isEnabled());
  EXPECT_FALSE(Outlet(window, "tableView_voice_index")->isVisible());

  Outlet<QComboBox>(window, "comboBox_index_search_range")->setCurrentIndex(3);
  const QDate today = QDate::currentDate();
  EXPECT_EQ(window.session().state().searchFromDate,
            std::max(20220101, (today.year() - 1) * 10000 + today.month() * 100 + today.day()));
  EXPECT_FALSE(log.contains("writeString:"));

  // A device that stopped answering leaves Reconnect as the way on; nothing else is offered.
  // It is still named; once gone, it is not.
  DeviceModel &model = window.session().model();
  model.update([](DeviceState &published) {
    published.phase = DevicePhase::Stopped;
    published.identity.serialNumber = "28417305";
  });
  EXPECT_TRUE(Outlet(window, "button_reconnect")->isEnabled());
  EXPECT_FALSE(Outlet(window, "button_download_voice")->isEnabled());
  EXPECT_EQ(text("label_serial_number"), "SN.28417305");
  model.update([](DeviceState &published) { published.phase = DevicePhase::Absent; });
  EXPECT_EQ(text("label_serial_number"), "SN.");

  SessionState &state = window.session().state();
  state.phase = CONNECTED_IDLE;
  state.deviceExist = 1;
  state.clipDownloadActive = 1;
  EXPECT_FALSE(window.close());
  EXPECT_TRUE(window.isVisible());
  state.clipDownloadActive = 0;  // idle with the device attached: nothing to lose
  EXPECT_TRUE(window.close());
  window.show();
  state.clipDownloadActive = 1;
  state.deviceExist = 0;
  EXPECT_TRUE(window.close());
}

// A fault the device or the line may make, and where it strikes.
struct Fault {
  const char *name;
  std::function<void(sim::Options &)> make;
  bool midClip = false;  // strikes while the first clip downloads, after the listing
  friend void PrintTo(const Fault &fault, std::ostream *out) { *out << fault.name; }
};

class WindowFaultTest : public WindowTest, public ::testing::WithParamInterface<Fault> {};

// After each fault the lists, their counts, the controls and the status line tell one story:
// a hung-up device gives way to what the library kept of it, a silent one keeps its lists
// with Reconnect, and damaged pages are listed as such and never saved as new.
TEST_P(WindowFaultTest, ListsCountsAndControlsAgreeAfterIt) {
  sim::Options link;
  GetParam().make(link);
  plugIn(link);
  if (GetParam().midClip) {
    ASSERT_TRUE(WaitFor([&] { return saveAll->isEnabled(); }, 30000));
    click("button_download_voice");
  }
  const QString hungUp = Localized("status_browsing_library").arg("QM482 SN.28417305");
  const QString said = GetParam().name == std::string("Silent") ? Localized("device_not_answering")
                       : GetParam().name == std::string("Garbage") ? Localized("status_connected")
                                                                   : hungUp;
  ASSERT_TRUE(WaitFor([&] { return text("label_status") == said; }, 30000))
      << qPrintable(text("label_status"));
  ASSERT_TRUE(WaitFor([&] { return !window.session().context().operation.active(); }, 10000));
  QApplication::processEvents();
  const bool shelf = said == hungUp;
  for (const auto &[list, counts] :
       {std::pair{clips, "label_voice_counts"}, {dives, "label_log_counts"}}) {
    const QString shown = text(counts);
    const int rows = list->model()->rowCount();
    EXPECT_TRUE(shown.isEmpty() ? rows == 0 : shown.startsWith(QString::number(rows) + ' '))
        << qPrintable(shown);
    EXPECT_EQ(shelf, shown.contains("in the library")) << qPrintable(shown);
  }
  EXPECT_EQ(Outlet(window, "button_download_voice")->isEnabled(),
            !shelf && said != Localized("device_not_answering"));
  EXPECT_EQ(reconnect->isEnabled(), !shelf);
  EXPECT_EQ(text("label_serial_number"), shelf ? "SN." : "SN.28417305");
  if (GetParam().name != std::string("Garbage")) {
    EXPECT_FALSE(saveAll->isEnabled());
    return;
  }
  // Every garbled page listed as damaged, saying why, not drawn, and left out of the new.
  ASSERT_EQ(dives->model()->rowCount(), 7);
  EXPECT_EQ(dives->model()->index(6, 1).data().toString(), "damaged");
  EXPECT_TRUE(
      dives->model()->index(6, 0).data(Qt::ToolTipRole).toString().startsWith("Damaged page: "));
  EXPECT_FALSE(window.findChild<DiveProfileView *>()->hasProfile());
  EXPECT_TRUE(text("label_log_counts").endsWith(", 0 new"));
  saveAll->click();
  ASSERT_TRUE(WaitFor([&] { return !answerer.boxes.isEmpty(); }, 20000));
  EXPECT_TRUE(answerer.boxes[0].endsWith("\n7 damaged pages not saved."))
      << qPrintable(answerer.boxes[0]);
  EXPECT_TRUE(QDir(home.downloads() + "/Mrvtq5dk/log").isEmpty());
  // Asked for alone, a damaged page is saved as the device gave it, once the diver is told.
  answerer.boxes.clear();
  click("button_download_log");
  ASSERT_TRUE(WaitFor([&] { return answerer.boxes.size() == 2; }, 20000));
  EXPECT_TRUE(answerer.boxes[0].endsWith("\nIt is saved as the device gave it."))
      << qPrintable(answerer.boxes[0]);
  EXPECT_EQ(QDir(home.downloads() + "/Mrvtq5dk/log").entryList(QDir::Files).size(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Faults, WindowFaultTest,
    ::testing::Values(Fault{"HangUpMidClip",
                            [](sim::Options &o) { o.hangupAfterBytes = 7 * 4096 + 200000; }, true},
                      Fault{"HangUpMidListing",
                            [](sim::Options &o) { o.hangupAfterBytes = 2 * 4096 + 100; }},
                      Fault{"Silent", [](sim::Options &o) { o.silentCommands = {"lp"}; }},
                      Fault{"Garbage", [](sim::Options &o) { o.garbageReplies = {"lp"}; }}),
    [](const ::testing::TestParamInfo<Fault> &info) { return std::string(info.param.name); });

// Rows another program or a disk error left in the library: a dive without its start whose
// page is cut short, a clip without its start, and a WAV's row of a kind never written. The
// shelf lists the dive as damaged with nothing saved, and no clip to play.
TEST(LibraryShelfTest, RowsFromElsewhereShowAsNothingSaved) {
  QTemporaryDir dir;
  const QString path = dir.filePath("library.sqlite"), wav = dir.filePath("clip.wav");
  const DeviceKey device{"QM482", "1"};
  WriteFile(wav, QByteArray(44, 'w'));
  {
    Library library(path);
    const QDateTime start(QDate(2024, 3, 1), QTime(12, 0), Qt::UTC);
    ASSERT_TRUE(library.recordClip(device, {"20240301120000", "entry", start}));
    ASSERT_TRUE(library.recordSaved(device, ItemKind::Clip, "20240301120000", wav));
  }
  ASSERT_TRUE(OtherProgramSql(path, {"INSERT INTO dives VALUES (1, 4, NULL, x'0102')",
                                     "INSERT INTO clips VALUES (1, 'odd', 'garbage', NULL)",
                                     "UPDATE files SET kind = 'photo'"}));
  Library library(path, Library::Access::Reader);
  const LibraryShelf shelf = *ReadShelf(library, device, 20000101);
  ASSERT_EQ(shelf.dives.size(), 1);
  EXPECT_TRUE(shelf.dives[0].damage.has_value());
  EXPECT_EQ(shelf.diveFiles[0], std::nullopt);
  EXPECT_TRUE(shelf.clips.isEmpty());
  EXPECT_FALSE(library.itemAt(wav).has_value());
}

}  // namespace
