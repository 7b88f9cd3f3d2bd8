#include <gtest/gtest.h>

#include "FieldDecoders.h"
#include "LogIndex.h"
#include "SearchRange.h"
#include "SystemLog.h"

namespace {

TEST(FieldDecoders, LittleEndianWordsUncheckedBcdAndNoReadPastTheRecord) {
  const QByteArray bytes("\x34\x12\xFF\x1A", 4);
  EXPECT_EQ(PageWord(&bytes, 0), 4660);
  EXPECT_EQ(PageByte(&bytes, 2), 255);
  EXPECT_EQ(bcd2bin(&bytes, 0), 34);
  EXPECT_EQ(bcd2bin(&bytes, 2), 165);
  EXPECT_THROW(PageByte(&bytes, 4), DataRangeError);
  EXPECT_THROW(PageWord(&bytes, 3), DataRangeError);
  EXPECT_THROW(bcd2bin(&bytes, -1), DataRangeError);
  EXPECT_EQ(PageWord(nullptr, 8), 0);  // no record
}

// A dive entered at a device clock (BCD year, month, day, hour, minute) as the list shows
// it, as its file name shows it, and as a day number.
QString Shown(uint8_t year, uint8_t month, uint8_t day, uint8_t hour, uint8_t minute) {
  const char clock[] = {char(year), char(month), char(day), char(hour), char(minute)};
  const QByteArray bytes(clock, sizeof clock);
  DiveRecord dive;
  dive.entry = DeviceClockUtc(&bytes, 0, 1, 2, 3, 4);
  return QStringList{DiveLogRowText(dive), DiveLogFileBaseName(dive),
                     QString::number(DiveLogDayNumber(dive))}
      .join(' ');
}

TEST(FieldDecoders, DeviceClockIsReadAsUtcAndShownInJapanTime) {
  EXPECT_EQ(Shown(0x23, 0x11, 0x05, 0x14, 0x00),
            "2023/11/05 23:00 0min 2023-11-05_23-00_0 20231105");
  // 20:30 on the device is 05:30 the next morning, and the day number follows.
  EXPECT_EQ(Shown(0x23, 0x12, 0x31, 0x20, 0x30),
            "2024/01/01 05:30 0min 2024-01-01_05-30_0 20240101");
  // Only 99-12-31 (the unset clock) is in the last century.
  EXPECT_EQ(Shown(0x99, 0x12, 0x31, 0x23, 0x59),
            "2000/01/01 08:59 0min 2000-01-01_08-59_0 20000101");
  EXPECT_EQ(Shown(0x99, 0x12, 0x30, 0x00, 0x00),
            "2099/12/30 09:00 0min 2099-12-30_09-00_0 20991230");
  // Impossible clocks (month 0, 30 February, 24 o'clock) show zeros and count as 2022.
  LogCapture quiet;
  for (const QString &impossible :
       {Shown(0x23, 0x00, 0x05, 0x14, 0x00), Shown(0x23, 0x02, 0x30, 0x00, 0x00),
        Shown(0x23, 0x01, 0x01, 0x24, 0x00)})
    EXPECT_EQ(impossible, "0000/00/00 00:00 0min 0000-00-00_00-00_0 20220101");
}

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
  EXPECT_EQ(DecodeLogHistory(History({{16, 0x2C}, {17, 0x01}}).constData()).numberOf, 300);
  EXPECT_EQ(DecodeLogHistory(History({{0, 0x90}, {1, 0x01}}).constData()).historyNumber, -112);
  EXPECT_EQ(DecodeLogHistory(History({{24, 0xC8}, {25, 0x01}}).constData()).start, 256 - 56 - 1);
  // The top byte is unsigned.
  EXPECT_EQ(DecodeLogHistory(History({{24, 1}, {27, 0x01}}).constData()).start, 16777216);
}

// A range is read the same in every locale, and its bound counts back from today.
TEST(SearchRange, IsReadInEveryFormAndBoundsCountBackFromToday) {
  EXPECT_EQ(ParseSearchRange("3 months"), 3);
  EXPECT_EQ(ParseSearchRange("3m"), 3);
  EXPECT_EQ(ParseSearchRange("1 Year"), 12);
  EXPECT_EQ(ParseSearchRange("5y"), 60);
  EXPECT_EQ(ParseSearchRange("2 年"), 24);
  EXPECT_EQ(ParseSearchRange("6 か月"), 6);
  for (const char *other : {"3 years", "2 months", "3", "months", "3 weeks", "-1 month", ""})
    EXPECT_EQ(ParseSearchRange(other), std::nullopt) << other;

  const QDate today(2024, 2, 15);
  EXPECT_EQ(SearchDateBound(1, today), 20240115);
  EXPECT_EQ(SearchDateBound(3, today), 20231115);
  EXPECT_EQ(SearchDateBound(12, today), 20230215);
  EXPECT_EQ(SearchDateBound(24, today), 20220215);
  EXPECT_EQ(SearchDateBound(60, today), 20220101);  // never before 2022
  EXPECT_EQ(SearchDateBound(0, today), 20220101);
}

}  // namespace
