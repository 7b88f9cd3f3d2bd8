#include <gtest/gtest.h>

#include "FieldDecoders.h"
#include "SystemLog.h"

namespace {

// year, month, day, hour, minute at indices 0..4.
QByteArray Clock(uint8_t year, uint8_t month, uint8_t day, uint8_t hour, uint8_t minute) {
  const char bytes[] = {char(year), char(month), char(day), char(hour), char(minute)};
  return QByteArray(bytes, sizeof bytes);
}

struct ShownDate {
  QString listDate, listTime, fileDate, fileTime;
  int32_t number;
};

ShownDate Show(const QByteArray &bytes) {
  return {NSDataToNSDateJST(&bytes, 0, 1, 2, 3, 4, kListStyle),
          NSDataToNSTimeJST(&bytes, 0, 1, 2, 3, 4, kListStyle),
          NSDataToNSDateJST(&bytes, 0, 1, 2, 3, 4, kFileStyle),
          NSDataToNSTimeJST(&bytes, 0, 1, 2, 3, 4, kFileStyle),
          NSDataToNSDateNumberJST(&bytes, 0, 1, 2, 3, 4)};
}

TEST(FieldDecoders, BytesWordsAndUncheckedBcd) {
  const QByteArray bytes("\x34\x12\xFF\x1A", 4);
  EXPECT_EQ(NSData2ToInt(&bytes, 0), 4660);
  EXPECT_EQ(NSDataToInt(&bytes, 0), 52);
  EXPECT_EQ(bcd2bin(&bytes, 0), 34);
  EXPECT_EQ(NSDataToInt(&bytes, 2), 255);
  EXPECT_EQ(NSData2ToInt(&bytes, 2), 0x1AFF);
  EXPECT_EQ(bcd2bin(&bytes, 2), 165);
  EXPECT_EQ(bcd2bin(&bytes, 3), 20);
}

TEST(FieldDecoders, IndexOutsideTheRecordThrows) {
  const QByteArray bytes("\x01\x02", 2);
  EXPECT_THROW(NSDataToInt(&bytes, 2), DataRangeError);
  EXPECT_THROW(NSData2ToInt(&bytes, 1), DataRangeError);
  EXPECT_THROW(bcd2bin(&bytes, -1), DataRangeError);
  EXPECT_THROW(NSDataToNSDateJST(&bytes, 0, 1, 2, 3, 4, kListStyle), DataRangeError);
}

TEST(FieldDecoders, DeviceClockIsReadAsUtcAndShownInJapanTime) {
  const ShownDate afternoon = Show(Clock(0x23, 0x11, 0x05, 0x14, 0x00));
  EXPECT_EQ(afternoon.listDate, "2023/11/05");
  EXPECT_EQ(afternoon.listTime, "23:00");
  EXPECT_EQ(afternoon.fileDate, "2023-11-05");
  EXPECT_EQ(afternoon.fileTime, "23-00");
  EXPECT_EQ(afternoon.number, 20231105);

  // 20:30 on the device is 05:30 the next morning, and the day number follows.
  const ShownDate evening = Show(Clock(0x23, 0x12, 0x31, 0x20, 0x30));
  EXPECT_EQ(evening.listDate, "2024/01/01");
  EXPECT_EQ(evening.listTime, "05:30");
  EXPECT_EQ(evening.number, 20240101);
}

TEST(FieldDecoders, OnlyNinetyNineDecemberThirtyFirstIsInTheLastCentury) {
  const ShownDate unset = Show(Clock(0x99, 0x12, 0x31, 0x23, 0x59));
  EXPECT_EQ(unset.fileDate, "2000-01-01");
  EXPECT_EQ(unset.fileTime, "08-59");
  EXPECT_EQ(unset.number, 20000101);

  EXPECT_EQ(Show(Clock(0x99, 0x12, 0x30, 0x00, 0x00)).fileDate, "2099-12-30");
  EXPECT_EQ(Show(Clock(0x00, 0x01, 0x01, 0x00, 0x00)).fileDate, "2000-01-01");
}

TEST(FieldDecoders, ImpossibleDatesAndMissingRecordsReadAsMissing) {
  LogCapture log;
  const ShownDate monthZero = Show(Clock(0x23, 0x00, 0x05, 0x14, 0x00));
  EXPECT_TRUE(monthZero.listDate.isNull());
  EXPECT_TRUE(monthZero.fileTime.isNull());
  EXPECT_EQ(monthZero.number, 20220101);
  EXPECT_TRUE(log.contains("NSDataToNSDateJST:nil!. 23/00/05 14:00:00"));
  EXPECT_TRUE(Show(Clock(0x23, 0x02, 0x30, 0x00, 0x00)).listDate.isNull());  // 30 February
  EXPECT_TRUE(Show(Clock(0x23, 0x01, 0x01, 0x24, 0x00)).listTime.isNull());  // 24 o'clock
  EXPECT_TRUE(Show(Clock(0xA3, 0x01, 0x01, 0x00, 0x00)).listDate.isNull());  // year 103

  log.clear();
  EXPECT_EQ(NSDataToInt(nullptr, 7), 0);
  EXPECT_EQ(NSData2ToInt(nullptr, 8), 0);
  EXPECT_EQ(bcd2bin(nullptr, 9), 0);
  EXPECT_EQ(NSDataToNSDateNumberJST(nullptr, 0, 1, 2, 3, 4), 20220101);
  EXPECT_TRUE(log.contains("NSDataToInt:start=7 data is nil!"));
  EXPECT_TRUE(log.contains("NSData2ToInt:start=8 data is nil!"));
  EXPECT_TRUE(log.contains("bcd2bin:start=9 data is nil!"));
  EXPECT_TRUE(log.contains("NSDataToNSDateJST:nil!. 00/00/00 00:00:00"));
}

}  // namespace
