// Dive logs from the simulator over a real pty: which pages the listing asks for, the rows in Japan
// time within the range, and the CSV files, byte for byte.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTimeZone>
#include <algorithm>

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
    dives.append(DiveAt(QDateTime(kToday.addDays(-30 * (count - i)), QTime(3, i), QTimeZone::utc()),
                        30 + i));
  }
  return dives;
}

QByteArray Csv(const sim::Dive &dive) {
  QTemporaryDir folder;
  const QByteArray page = sim::DivePage(dive);
  EXPECT_TRUE(DiveLogCsvSave(folder.filePath("dive.csv"), DecodeDive(&page)));
  return ReadFile(folder.filePath("dive.csv"));
}

class LogTransferTest : public DeviceSessionFixture {
 protected:
  LogTransferTest() {
    logs.today = [] { return kToday; };
  }
  // Identifies the device and lists its dives, as after plugging in.
  void connectAndList(sim::Contents contents, sim::Options options = {}) {
    log.clear();  // settle() counts this line's "#detail" lines
    plugIn(std::move(contents), options);
    ASSERT_TRUE(tickUntil(TRY_TX_LOG_HISTORY));
    relist();
  }
  // The history and the pages again, as after a change of range.
  void relist() {
    session->state().indexSequence = 1;
    session->state().phase = TRY_TX_LOG_HISTORY;
    session->tick();
    ASSERT_TRUE(waitForState(CONNECTED_IDLE, 60000));
    ASSERT_TRUE(settle());
    QCoreApplication::processEvents();  // the rows, handed to this thread
  }
  // The newest dive listed, as the window's button asks for it with the first row picked.
  void downloadNewest() { logs.downloadDive(published().dives.value(0).number, watch.outcomes()); }
  QList<QByteArray> pageRequests() const {
    QList<QByteArray> requests = wire();
    requests.removeIf([](const QByteArray &command) { return !command.startsWith("lp"); });
    return requests;
  }
  VoiceTransfer voice{*session,
                      std::move(clipTimer)};  // reads the voice index, which the listing waits for
  LogTransfer logs{*session};
};

// The held dives newest first, never below dive 0. A held count of 0x90 is -112 once sign-extended:
// no dives, and no closing "#detail".
TEST_F(LogTransferTest, ListingFetchesTheHeldDivesNewestFirstThenIdles) {
  connectAndList(Holding(Dives(2), 2, 0x90));
  EXPECT_TRUE(pageRequests().isEmpty());
  EXPECT_EQ(wire().last(), "lh");
  EXPECT_EQ(published().phase, DevicePhase::Idle);

  connectAndList(Holding(Dives(2), 2, 5));
  EXPECT_EQ(pageRequests(), (QList<QByteArray>{"lp000001", "lp000000"}));

  connectAndList(Holding(Dives(3), 10));
  EXPECT_EQ(pageRequests(), (QList<QByteArray>{"lp000009", "lp000008", "lp000007"}));
  EXPECT_EQ(wire().last(), "#detail");
}

// The range picks the rows, every held dive is fetched whatever the range. The bound is a day in
// Japan time: 00:10 there on the bound's day (15:10 UTC the day before) is in, 23:50 is out.
TEST_F(LogTransferTest, RowsFollowTheRangeInJapanTimeWhileEveryHeldDiveIsFetched) {
  const int ranges[] = {1, 12, 60};
  QVector<sim::Dive> dives;
  for (int i = 0; i < 20; ++i) {  // one dive every 100 days, the newest two days ago
    const QDate day = kToday.addDays(-2 - 100 * (19 - i));
    dives.append(
        DiveAt(QDateTime(day, QTime(i % 2 ? 1 : 22, 10), QTimeZone::utc()), 25 + i % 40, i));
  }
  for (const int range : ranges) {
    const QDate bound =
        QDate::fromString(QString::number(SearchDateBound(range, kToday)), "yyyyMMdd");
    dives.append(DiveAt(QDateTime(bound.addDays(-1), QTime(15, 10), QTimeZone::utc()), 33, 7));
    dives.append(DiveAt(QDateTime(bound.addDays(-1), QTime(14, 50), QTimeZone::utc()), 34, 8));
  }
  std::sort(dives.begin(), dives.end(), [](auto &a, auto &b) { return a.entry < b.entry; });
  const int firstNumber = 15;
  plugIn(Holding(dives, firstNumber + int(dives.size())));
  ASSERT_TRUE(tickUntil(TRY_TX_LOG_HISTORY));
  for (const int range : ranges) {
    logs.setSearchRange(range);
    relist();
    const int32_t bound = session->state().searchFromDate;
    QStringList rows;
    QList<int32_t> numbers;
    for (int i = int(dives.size()) - 1; i >= 0; --i) {
      const QDateTime japan = dives[i].entry.toTimeZone(QTimeZone(9 * 3600));
      if (japan.date().toString("yyyyMMdd").toInt() < bound) continue;
      rows << japan.toString("yyyy/MM/dd HH:mm ") + QString::number(dives[i].diveMinutes) + "min";
      numbers << firstNumber + i;
    }
    EXPECT_TRUE(rows.last().endsWith("00:10 33min")) << range;
    EXPECT_EQ(RowTexts(published().dives), rows) << range;
    EXPECT_EQ(RowNumbers(published().dives), numbers) << range;
  }
  EXPECT_EQ(pageRequests().size(), 3 * dives.size());
  EXPECT_EQ(published().dives.first().entry, dives.last().entry);  // the newest, as recorded
}

// Only dives still in the device's history are asked for. With the port gone the request is not
// made: the download ends as unplugged (not "power is off"), the device is shown as gone, and
// the controls come back for the next try once it is back.
TEST_F(LogTransferTest, DownloadAsksOnlyForDivesStillInTheHistory) {
  SessionState &state = session->state();
  const auto idle = [&] {
    state.phase = CONNECTED_IDLE;
    state.historyStart = 9;
    state.historyCount = 3;
  };
  idle();
  logs.downloadDive(7, watch.outcomes());
  ASSERT_TRUE(WaitFor([&] { return watch.lastOutcome.has_value(); }));
  EXPECT_EQ(watch.lastOutcome->failure, Failure::Unplugged);
  EXPECT_EQ(published().phase, DevicePhase::Absent);

  plugIn(Holding(Dives(3), 10));
  idle();
  session->context().transitions.publishPhase();  // the download that never went out is over
  EXPECT_EQ(published().phase, DevicePhase::Idle);
  session->context().operation.fail(Failure::Cancelled, QString());  // the test takes over
  logs.downloadDive(6, watch.outcomes());  // 9 - 6 = 3: gone from the device
  EXPECT_EQ(watch.lastOutcome->failure, Failure::NotOnDevice);
  logs.downloadDive(7, watch.outcomes());
  ASSERT_TRUE(WaitFor([&] { return !pageRequests().isEmpty(); }));
  EXPECT_EQ(pageRequests(), QList<QByteArray>{"lp000007"});
}

// Cancel mid-page keeps the older download, and the rest of that page must not end up in the next
// download, which replaces the older file with the dive's CSV, byte for byte. A file that took the
// folder's name later fails the download as "cannot save" (never "Download complete") and is left
// as it was.
TEST_F(LogTransferTest, SavingLeavesWhatIsInTheWayUntilTheCsvIsWhole) {
  const sim::Dive dive = DiveAt(QDateTime(QDate(2023, 11, 5), QTime(14, 0), QTimeZone::utc()), 45);
  const sim::Dive older = DiveAt(QDateTime(QDate(2023, 10, 1), QTime(2, 0), QTimeZone::utc()), 30);
  sim::Options slowLink;
  slowLink.bytesPerSecond = 4000;  // a page takes a second
  logs.setSearchRange(60);
  connectAndList(Holding({older, dive}, 2), slowLink);
  const QString folder = paths().logFolder, csv = folder + "/2023-11-05_23-00_45_profile.csv";
  WriteFile(csv, "an older download");

  downloadNewest();
  ASSERT_TRUE(WaitFor([&] { return session->state().pageReceived > 500; }));
  session->cancel();
  ASSERT_TRUE(WaitFor([&] { return watch.lastOutcome.has_value(); }));
  EXPECT_EQ(watch.lastOutcome->failure, Failure::Cancelled);
  ASSERT_TRUE(WaitFor([&] { return session->context().transitions.lineQuiet(); }));
  EXPECT_EQ(ReadFile(csv), "an older download");

  downloadNewest();
  ASSERT_TRUE(WaitFor([&] { return watch.lastOutcome->ok(); }, 10000));
  EXPECT_EQ(published().lastOutcome, watch.lastOutcome);
  EXPECT_EQ(QDir(folder).entryList(QDir::Files).size(), 1);
  EXPECT_EQ(ReadFile(csv), Csv(dive));
  ASSERT_TRUE(waitForState(CONNECTED_IDLE) && settle());
  relist();  // a listing after a download reads every page and saves none
  EXPECT_EQ(published().dives.size(), 2);
  EXPECT_EQ(QDir(folder).entryList(QDir::Files).size(), 1);

  ASSERT_TRUE(waitForState(CONNECTED_IDLE) && settle());
  ASSERT_TRUE(QDir(folder).removeRecursively());
  WriteFile(folder, "not a folder");
  downloadNewest();
  ASSERT_TRUE(WaitFor([&] { return watch.lastOutcome->failure == Failure::CannotSave; }, 10000));
  EXPECT_FALSE(watch.lastOutcome->sentence.contains(Localized("download_complete")));
  EXPECT_EQ(ReadFile(folder), "not a folder");
  EXPECT_TRUE(waitForState(CONNECTED_IDLE));
}

}  // namespace
