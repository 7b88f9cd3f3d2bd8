#include <gtest/gtest.h>

#include "DiveLogPage.h"
#include "LogIndex.h"
#include "SystemLog.h"

namespace {

QByteArray History(std::initializer_list<std::pair<int, uint8_t>> bytes) {
  QByteArray record(kLogHistoryBytes, '\0');
  for (const auto &[offset, value] : bytes) record[offset] = char(value);
  return record;
}

TEST(LogHistory, BytesAreSignExtendedBeforeTheyAreCombined) {
  const LogHistory normal = DecodeLogHistory(History({{0, 3}, {16, 3}, {24, 10}}).constData());
  EXPECT_EQ(normal.historyNumber, 3);
  EXPECT_EQ(normal.numberOf, 3);
  EXPECT_EQ(normal.start, 9);

  EXPECT_EQ(DecodeLogHistory(History({{16, 0x90}}).constData()).numberOf, -112);
  EXPECT_EQ(DecodeLogHistory(History({{16, 0x7F}}).constData()).numberOf, 127);
  EXPECT_EQ(DecodeLogHistory(History({{16, 0x2C}, {17, 0x01}}).constData()).numberOf, 300);
  EXPECT_EQ(DecodeLogHistory(History({{0, 0x90}, {1, 0x01}}).constData()).historyNumber, -112);
  EXPECT_EQ(DecodeLogHistory(History({{24, 0xC8}}).constData()).start, -57);
  EXPECT_EQ(DecodeLogHistory(History({{24, 0xC8}, {25, 0x01}}).constData()).start, 256 - 56 - 1);
  // The top byte is unsigned.
  EXPECT_EQ(DecodeLogHistory(History({{24, 1}, {27, 0x01}}).constData()).start, 16777216);
}

TEST(SearchRange, BoundsCountBackFromToday) {
  const QDate today(2024, 2, 15);
  EXPECT_EQ(SearchDateBound("1 month", today), 20240115);
  EXPECT_EQ(SearchDateBound("3 months", today), 20231115);
  EXPECT_EQ(SearchDateBound("3 か月", today), 20231115);
  EXPECT_EQ(SearchDateBound("1 year", today), 20230215);
  EXPECT_EQ(SearchDateBound("2 年", today), 20220215);
  EXPECT_EQ(SearchDateBound("3 years", today), 20220101);
  // Only one year is borrowed: 14 months back gives month 0 of the year before.
  EXPECT_EQ(SearchDateBound("14 months", today), 20230015);
  EXPECT_EQ(SearchDateBound("-2 months", today), 20240115);
  EXPECT_EQ(SearchDateBound("months", today), 20220101);
  EXPECT_EQ(SearchDateBound("", today), 20220101);
}

QByteArray Page(uint8_t year, uint8_t month, uint8_t day, uint8_t hour, uint8_t minute,
                int minutes) {
  using namespace DiveLogPage;
  QByteArray page(kBytes, '\0');
  page[kYear] = char(year);
  page[kMonth] = char(month);
  page[kDay] = char(day);
  page[kEntryHour] = char(hour);
  page[kEntryMinute] = char(minute);
  page[kDiveTimeMinutes] = char(minutes);
  return page;
}

TEST(DiveRow, ShowsTheDiveInJapanTime) {
  const QByteArray dive = Page(0x23, 0x11, 0x05, 0x14, 0x00, 45);
  EXPECT_EQ(DiveLogRowText(dive), "2023/11/05 23:00 45min");
  EXPECT_EQ(DiveLogFileBaseName(dive), "2023-11-05_23-00_45");
  EXPECT_EQ(DiveLogDayNumber(dive), 20231105);
  const QByteArray lateEvening = Page(0x23, 0x11, 0x05, 0x20, 0x30, 50);
  EXPECT_EQ(DiveLogRowText(lateEvening), "2023/11/06 05:30 50min");
  EXPECT_EQ(DiveLogDayNumber(lateEvening), 20231106);

  LogCapture quiet;
  const QByteArray erased(DiveLogPage::kBytes, '\xFF');
  EXPECT_EQ(DiveLogRowText(erased), "0000/00/00 00:00 65535min");
  EXPECT_EQ(DiveLogFileBaseName(erased), "0000-00-00_00-00_65535");
}

}  // namespace
