#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cerrno>

#include "DiveLogCsv.h"
#include "DiveLogPage.h"
#include "LogIndex.h"
#include "SystemLog.h"
#include "TestSupport.h"

namespace {

using namespace DiveLogPage;

void PutWord(QByteArray &page, int offset, int value) {
  page[offset] = char(value & 0xFF);
  page[offset + 1] = char(value >> 8);
}

void PutSample(QByteArray &page, int k, QByteArray bytes) {
  page.replace(k * kSampleBytes, kSampleBytes, bytes);
}

// A dive of 5 November 2023, 14:00 to 14:45 on the device clock.
QByteArray SampleDive(int profileSize) {
  QByteArray page(kBytes, '\0');
  // Warnings SLOW and a bit without a text; BATTERY_LOW and two bits without texts.
  const std::pair<int, int> bytes[] = {
      {kEntryMinute, 0x00}, {kEntryHour, 0x14},     {kExitMinute, 0x45},
      {kExitHour, 0x14},    {kDay, 0x05},           {kMonth, 0x11},
      {kYear, 0x23},        {kSamplingInterval, 5}, {kDayCount, 2},
      {kCns, 17},           {kWarningFlags, 0x41},  {kInformationFlags, 0x0B},
      {kSafetyFactor, 1},   {kEntryPressure, 198},  {kOxygenPercent, 21}};
  for (const auto &[offset, value] : bytes) page[offset] = char(value);
  for (int i = 0; i < kBodyNitrogenCount; ++i) page[kBodyNitrogen + i] = char(100 + i);
  PutWord(page, kDiveTimeMinutes, 45);
  PutWord(page, kMaxDepth, 1834);
  PutWord(page, kAverageDepth, 1020);
  PutWord(page, kTemperature, 65526);  // -1.0
  PutWord(page, kProfileSize, profileSize);
  PutWord(page, kOtu, 12);
  PutSample(page, 0, QByteArray::fromHex("0000d7000a531500"));
  PutSample(page, 1, QByteArray::fromHex("f401d2000a531580"));
  PutSample(page, 2, QByteArray::fromHex("4e07d7000a531521"));
  return page;
}

const char kSampleDiveCsv[] =
    "date,2023-11-05\n"
    "entry time,23:00\n"
    "exit time,23:45\n"
    "sampling,5\n"
    "day_count,2\n"
    "cns,17\n"
    "warning,SLOW,\n"
    "infomation,BATTERY_LOW,\n"
    "safe facter,1\n"
    "pressure on entry,1013.76,hPa\n"
    "o2_per,21\n"
    "dive time,45\n"
    "max depth,18.34\n"
    "ave depth,10.20\n"
    "temperature,-1.0\n"
    "profile size,3\n"
    "otu,12\n"
    "body nitrogen,100,101,102,103,104,105,106,107,108,109,110,111,112,113,114,115,\n"
    "\n"
    "profile\n"
    "time,depth,temperature,gas pressure,n2,o2,o2per,warning\n"
    "0,0.00,21.5,10,5,3,21,\n"
    "5,5.00,21.0,10,5,3,21,OUT,\n"
    "10,18.70,21.5,10,5,3,21,SLOW,DALM,\n";

class DiveLogCsvTest : public ::testing::Test {
 protected:
  QTemporaryDir dir;
  QString path = dir.filePath("2023-11-05_23-00_45_profile.csv");
};

TEST_F(DiveLogCsvTest, WritesTheDiveByteForByte) {
  WriteFile(path, "an older file that must not survive, nor be appended to\n");
  const QByteArray page = SampleDive(3);
  ASSERT_TRUE(DiveLogCsvSave(path, DecodeDive(&page)));
  EXPECT_EQ(ReadFile(path), QByteArray(kSampleDiveCsv));
}

// A folder in the way is left as it was, and a full disk is named as such.
TEST_F(DiveLogCsvTest, AFailedSaveLeavesWhatWasThereAndIsSaidSo) {
  const QByteArray page = SampleDive(3);
  ASSERT_TRUE(QDir().mkpath(path));
  const SaveResult result = DiveLogCsvSave(path, DecodeDive(&page));
  EXPECT_EQ(result.error, SaveError::InTheWay);
  EXPECT_EQ(DescribeSaveFailure(result, "dive.csv"),
            "dive.csv could not be saved: something else of that name is in the way.");
  EXPECT_EQ(QDir(dir.path()).count(), 3u);  // ".", ".." and the folder: no temporary file

  // The system's words for a full disk (or quota) become the sentence the diver reads.
  EXPECT_EQ(SaveFailure(QFile(path), EDQUOT).error, SaveError::DiskFull);
  EXPECT_EQ(DescribeSaveFailure(SaveFailure(QFile(path), ENOSPC), "dive.csv"),
            "dive.csv could not be saved: the disk is full.");
}

// An erased page (every byte 0xFF) is listed and named with zeros for its impossible clock,
// and its dive time read unsigned.
TEST(DiveRecord, AnErasedPageIsListedWithZerosAndItsMinutesUnsigned) {
  LogCapture quiet;
  const QByteArray erased(kBytes, '\xFF');
  EXPECT_EQ(DiveLogRowText(DecodeDive(&erased)), "0000/00/00 00:00 65535min");
  EXPECT_EQ(DiveLogFileBaseName(DecodeDive(&erased)), "0000-00-00_00-00_65535");
}

}  // namespace
