#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QThread>
#include <QTimeZone>

#include "DeviceSessionFixture.h"
#include "DiveLogCsv.h"
#include "Localization.h"
#include "LogIndex.h"
#include "LogTransfer.h"
#include "VoiceTransfer.h"

namespace {

const QDate kToday(2024, 2, 15);

// A device holding the given dives (oldest first) of total ever recorded.
sim::Contents Holding(QVector<sim::Dive> dives, int total, std::optional<int> heldWord = {}) {
  sim::Contents contents = sim::GenerateContents(5, kToday);
  contents.dives = std::move(dives);
  contents.totalDives = total;
  contents.heldCountWord = heldWord;
  return contents;
}

sim::Dive DiveAt(const QDateTime &entryUtc, int minutes, uint32_t seed = 1) {
  return sim::GenerateDive(seed, entryUtc, minutes, 10, 1800, 260, 220);
}

QVector<sim::Dive> Dives(int count) {
  QVector<sim::Dive> dives;
  for (int i = 0; i < count; ++i) {
    dives.append(
        DiveAt(QDateTime(kToday.addDays(-30 * (count - i)), QTime(3, i % 60), QTimeZone::utc()),
               30 + i, i));
  }
  return dives;
}

class LogTransferTest : public DeviceSessionFixture {
 protected:
  LogTransferTest() {
    logs.today = [] { return kToday; };
  }
  // Identifies the device and lists its dives, as after plugging in.
  void connectAndList() {
    ASSERT_TRUE(tickUntil(TRY_TX_LOG_HISTORY));
    session->timer2Call();
    ASSERT_TRUE(waitForState(CONNECTED_IDLE, 60000));
    ASSERT_TRUE(settle());
    QCoreApplication::processEvents();
  }
  QList<QByteArray> pageRequests() const {
    QList<QByteArray> requests;
    for (const QByteArray &command : wire()) {
      if (command.startsWith("lp")) requests << command;
    }
    return requests;
  }
  VoiceTransfer voice{*session};
  LogTransfer logs{*session};
};

TEST_F(LogTransferTest, ListingFetchesTheHeldDivesNewestFirstThenIdles) {
  plugIn(Holding(Dives(3), 10));
  connectAndList();
  EXPECT_EQ(pageRequests(), (QList<QByteArray>{"lp000009", "lp000008", "lp000007"}));
  EXPECT_EQ(wire().last(), "#detail");
  EXPECT_EQ(session->state().g_read_index_sequence, 0);
  EXPECT_EQ(session->state().g_receive_data_type_is_voice_record, eSERIAL_RX_RESPONSE);
  EXPECT_TRUE(log.contains("history number_of:00000003 start:00000009{No.00000003}"));
  EXPECT_TRUE(WaitFor([&] { return window.called("EnableComboBoxLogIndex:1"); }));
  EXPECT_TRUE(window.called("EnableButtonDownloadLog:1"));
}

TEST_F(LogTransferTest, ListingStopsAtDiveZero) {
  plugIn(Holding(Dives(2), 2, 5));
  connectAndList();
  EXPECT_EQ(pageRequests(), (QList<QByteArray>{"lp000001", "lp000000"}));
}

TEST_F(LogTransferTest, NegativeCountTakesTheNoLogsPathWithoutDetail) {
  plugIn(Holding(Dives(2), 2, 0x90));
  connectAndList();
  EXPECT_TRUE(pageRequests().isEmpty());
  EXPECT_EQ(wire().last(), "lh");
  EXPECT_TRUE(log.contains("history number_of:-0000112 start:00000001{No.00000003}"));
  EXPECT_TRUE(window.called("EnableButtonDownloadVoice:1"));

  // A history record must be exactly 32 bytes.
  session->state().g_receive_data_type_is_voice_record = eSERIAL_RX_LOG_HISTORY;
  QByteArray shortRecord(31, '\x01');
  session->context().hooks.logHistory(shortRecord.data(), 31);
  QThread::msleep(100);
  EXPECT_TRUE(pageRequests().isEmpty());
}

// The range picks the rows; every held dive is fetched whatever the range (the bounds
// themselves are worked out in the unit tests). Dives at 22:10 UTC fall on the next day in
// Japan time, which is the day the bound is compared with.
TEST_F(LogTransferTest, RowsFollowTheRangeWhileEveryHeldDiveIsFetched) {
  constexpr int kDives = 20;
  QVector<sim::Dive> dives;
  for (int i = 0; i < kDives; ++i) {  // one dive every 100 days, the newest two days ago
    const QDate day = kToday.addDays(-2 - 100 * (kDives - 1 - i));
    dives.append(
        DiveAt(QDateTime(day, QTime(i % 2 ? 1 : 22, 10), QTimeZone::utc()), 25 + i % 40, i));
  }
  plugIn(Holding(dives, 35));
  bool first = true;
  for (const char *range : {"1 month", "1 year", "5 years"}) {
    window.searchRange = range;
    logs.SetIndexSearchDatatime();
    const int32_t bound = session->state().g_index_search_date;
    if (first) {
      connectAndList();
      first = false;
    } else {  // as after a change of range: the index sequence again
      session->context().clearList(IndexList::Log);
      session->state().g_read_index_sequence = 1;
      session->state().g_serial_port_status = TRY_TX_LOG_HISTORY;
      session->timer2Call();
      ASSERT_TRUE(waitForState(CONNECTED_IDLE, 60000));
      ASSERT_TRUE(settle());
      QCoreApplication::processEvents();
    }
    QStringList rows;
    QList<int32_t> numbers;
    for (int i = kDives - 1; i >= 0; --i) {
      const QDateTime japan = dives[i].entry.toTimeZone(QTimeZone(9 * 3600));
      if (japan.date().toString("yyyyMMdd").toInt() < bound) continue;
      rows << japan.toString("yyyy/MM/dd HH:mm ") + QString::number(dives[i].diveMinutes) + "min";
      numbers << 15 + i;
    }
    EXPECT_FALSE(rows.isEmpty());
    EXPECT_EQ(window.rows(IndexList::Log), rows) << range;
    EXPECT_EQ(session->context().lists.items_log_index_number, numbers) << range;
  }
  EXPECT_EQ(pageRequests().size(), 3 * kDives);
}

TEST_F(LogTransferTest, DownloadWritesTheSelectedDiveAsItsCsvFile) {
  const sim::Dive dive = DiveAt(QDateTime(QDate(2023, 11, 5), QTime(14, 0), QTimeZone::utc()), 45);
  plugIn(
      Holding({DiveAt(QDateTime(QDate(2023, 11, 1), QTime(2, 0), QTimeZone::utc()), 40), dive}, 2));
  window.searchRange = "5 years";
  logs.SetIndexSearchDatatime();
  connectAndList();
  ASSERT_EQ(window.rows(IndexList::Log).value(0), "2023/11/05 23:00 45min");
  const QString path = paths().g_log_folder_path + "/2023-11-05_23-00_45_profile.csv";
  WriteFile(path, "an older download");

  logs.action_button_download_log(window.outcomes());
  ASSERT_TRUE(WaitFor([&] {
    return window.called("outcome:2023-11-05_23-00_45\r\n" + Localized("download_complete"));
  }));
  QTemporaryDir expected;
  const QByteArray page = sim::DivePage(dive);
  ASSERT_TRUE(DiveLogCsvSave(expected.filePath("dive.csv"), &page));
  EXPECT_EQ(ReadFile(path), ReadFile(expected.filePath("dive.csv")));
  ASSERT_TRUE(waitForState(CONNECTED_IDLE));
  EXPECT_TRUE(WaitFor([&] { return wire().last() == "#detail"; }));
  EXPECT_EQ(session->state().g_log_download_mode, 0);
}

TEST_F(LogTransferTest, DownloadAsksOnlyForDivesStillInTheHistory) {
  plugIn(Holding(Dives(3), 10));
  SessionState &state = session->state();
  state.g_serial_port_status = CONNECTED_IDLE;
  state.g_log_history_start = 9;
  state.g_log_history_count = 3;
  session->context().lists.items_log_index = {"2023/11/05 23:00 45min", "2023/11/04 23:00 40min"};
  session->context().lists.items_log_index_number = {7, 6};
  session->context().operation.fail(Failure::Cancelled, QString());  // the test takes over
  window.selectRow(IndexList::Log, 1);
  logs.action_button_download_log(window.outcomes());  // 9 - 6 = 3: gone from the device
  EXPECT_EQ(window.lastOutcome()->failure, Failure::NotOnDevice);
  window.selectRow(IndexList::Log, 0);
  logs.action_button_download_log(window.outcomes());
  ASSERT_TRUE(WaitFor([&] { return !pageRequests().isEmpty(); }));
  EXPECT_EQ(pageRequests(), QList<QByteArray>{"lp000007"});

  // While the device is busy the button only greys out the controls.
  state.g_serial_port_status = RX_LOG_HISTORY;
  window.clear();
  logs.action_button_download_log(window.outcomes());
  EXPECT_TRUE(window.called("EnableButtonDownloadLog:0"));
  QThread::msleep(100);
  EXPECT_EQ(pageRequests().size(), 1);
}

TEST_F(LogTransferTest, PageDumpWalksTheMemoryOnceThenStops) {
  plugIn(Holding(Dives(3), 10));
  session->state().g_serial_port_status = CONNECTED_IDLE;
  logs.readRequestDiveLog();
  ASSERT_TRUE(WaitFor([&] { return log.contains("readRequestDiveLog else.."); }, 30000));
  const QList<QByteArray> commands = wire();
  ASSERT_EQ(commands.size(), 501);
  EXPECT_EQ(commands.first(), "lr000");
  EXPECT_EQ(commands[499], "lr499");
  EXPECT_EQ(commands.last(), "lh");
  EXPECT_TRUE(log.contains("Log download (offset:499)"));
  EXPECT_TRUE(log.contains("Log download (save history)"));
  EXPECT_EQ(session->state().g_log_download_mode, 2);
  logs.readRequestDiveLog();  // the offset is never reset: no second dump
  QThread::msleep(100);
  EXPECT_EQ(wire().size(), 501);
}

// The cable pulled in the third page of a listing: the read fails and the port closes.
// Plugged in again, the device is opened afresh (as discovery does), listed, and a dive
// downloads whole.
TEST_F(LogTransferTest, HangUpMidListingThenANewConnectionFinishesADownload) {
  const sim::Contents contents = Holding(Dives(5), 5);
  sim::Options cable;
  cable.hangupAfterBytes = 2 * 4096 + 1000;
  window.searchRange = "5 years";
  logs.SetIndexSearchDatatime();
  plugIn(contents, cable);
  ASSERT_TRUE(tickUntil(RX_LOG_HISTORY));
  ASSERT_TRUE(WaitFor([&] { return !session->state().readThreadRunning; }, 10000));
  EXPECT_FALSE(session->channel().isOpen());
  EXPECT_EQ(log.startingWith("read error!").size(), 1u);

  log.clear();  // the new connection's "#detail" replies are counted afresh
  plugIn(contents);
  session->Reconnect();
  connectAndList();
  ASSERT_EQ(window.rows(IndexList::Log).size(), 5);
  window.selectRow(IndexList::Log, 1);
  logs.action_button_download_log(window.outcomes());
  const QString folder = paths().g_log_folder_path;
  ASSERT_TRUE(WaitFor([&] { return QDir(folder).entryList(QDir::Files).size() == 1; }));
  QTemporaryDir expected;
  const QByteArray page = sim::DivePage(contents.dives[3]);  // the second newest
  ASSERT_TRUE(DiveLogCsvSave(expected.filePath("dive.csv"), &page));
  EXPECT_TRUE(WaitFor([&] {
    return ReadFile(folder + "/" + QDir(folder).entryList(QDir::Files).value(0)) ==
           ReadFile(expected.filePath("dive.csv"));
  }));
}

// Cancel mid-page: the session is idle at once and saves nothing, and the rest of the
// page still on its way must not end up in the next download's CSV.
TEST_F(LogTransferTest, CancelMidPageLeavesNoCsvAndTheNextDownloadIsWhole) {
  const sim::Dive dive = DiveAt(QDateTime(QDate(2023, 11, 5), QTime(14, 0), QTimeZone::utc()), 45);
  sim::Options slowLink;
  slowLink.bytesPerSecond = 4000;  // a page takes a second
  window.searchRange = "5 years";
  logs.SetIndexSearchDatatime();
  plugIn(Holding({dive}, 1), slowLink);
  connectAndList();
  const QString folder = paths().g_log_folder_path;

  logs.action_button_download_log(window.outcomes());
  ASSERT_TRUE(WaitFor([&] { return session->state().g_dive_log_received > 500; }));
  session->cancel();
  EXPECT_EQ(session->state().g_serial_port_status, CONNECTED_IDLE);
  ASSERT_TRUE(WaitFor([&] { return window.lastOutcome().has_value(); }));
  EXPECT_EQ(window.lastOutcome()->failure, Failure::Cancelled);
  ASSERT_TRUE(WaitFor([&] { return session->context().transitions.lineQuiet(); }));
  EXPECT_TRUE(QDir(folder).entryList(QDir::Files).isEmpty());

  logs.action_button_download_log(window.outcomes());
  ASSERT_TRUE(WaitFor([&] { return window.lastOutcome()->ok(); }, 10000));
  QTemporaryDir expected;
  const QByteArray page = sim::DivePage(dive);
  ASSERT_TRUE(DiveLogCsvSave(expected.filePath("dive.csv"), &page));
  EXPECT_EQ(QDir(folder).entryList(QDir::Files), QStringList{"2023-11-05_23-00_45_profile.csv"});
  EXPECT_EQ(ReadFile(folder + "/2023-11-05_23-00_45_profile.csv"),
            ReadFile(expected.filePath("dive.csv")));
}

// Something else has taken the log folder's name since start-up. Anything at the path
// counts as the folder, so the dive is fetched; its CSV cannot be written, which the log
// and the outcome say (never "Download complete"), and the thing in the way is left as it
// was. The session goes back to idle.
TEST_F(LogTransferTest, FileInPlaceOfTheLogFolderLeavesItAndTheSessionIntact) {
  window.searchRange = "5 years";
  logs.SetIndexSearchDatatime();
  plugIn(Holding(Dives(2), 2));
  connectAndList();
  const QString folder = paths().g_log_folder_path;
  ASSERT_TRUE(QDir(folder).removeRecursively());
  WriteFile(folder, "not a folder");
  window.clear();
  logs.action_button_download_log(window.outcomes());
  ASSERT_TRUE(WaitFor([&] { return wireCount("lp000001") == 2; }));
  ASSERT_TRUE(waitForState(CONNECTED_IDLE));
  ASSERT_TRUE(settle());
  QThread::msleep(100);
  EXPECT_EQ(ReadFile(folder), "not a folder");
  EXPECT_EQ(log.startingWith("DiveLogCsvSave Filename=" + folder.toStdString() +
                             "/2024-01-16_12-01_31_profile.csv filehandle is nil.")
                .size(),
            1u);
  ASSERT_TRUE(WaitFor([&] { return window.lastOutcome().has_value(); }));
  EXPECT_EQ(window.lastOutcome()->failure, Failure::CannotSave);
  EXPECT_FALSE(window.lastOutcome()->sentence.contains(Localized("download_complete")));
}

}  // namespace
