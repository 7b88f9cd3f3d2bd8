#include "LogIndex.h"

#include "DiveLogPage.h"
#include "FieldDecoders.h"
#include "TextValues.h"

namespace {

int32_t Signed(char byte) {
  return static_cast<int8_t>(byte);
}
constexpr int32_t kEarliestSearchDate = 20220101;

struct DiveTimes {
  QString date, time;
  int minutes;
};

DiveTimes Times(const QByteArray &page, uint8_t style) {
  using namespace DiveLogPage;
  const bool list = style == kListStyle;
  QString date = JapanDateText(&page, kYear, kMonth, kDay, kEntryHour, kEntryMinute, style);
  QString time = JapanTimeText(&page, kYear, kMonth, kDay, kEntryHour, kEntryMinute, style);
  if (date.isNull()) date = list ? QStringLiteral("0000/00/00") : QStringLiteral("0000-00-00");
  if (time.isNull()) time = list ? QStringLiteral("00:00") : QStringLiteral("00-00");
  return {date, time, PageWord(&page, kDiveTimeMinutes)};
}

}  // namespace

LogHistory DecodeLogHistory(const char *r) {
  LogHistory history;
  history.historyNumber = Signed(r[0]) | Wrap32(int64_t{Signed(r[1])} * 256);
  history.numberOf = Signed(r[16]) | Wrap32(int64_t{Signed(r[17])} * 256);
  history.start =
      Wrap32(int64_t{Signed(r[24])} + int64_t{Signed(r[25])} * 256 +
             int64_t{Signed(r[26])} * 65536 + int64_t{static_cast<uint8_t>(r[27])} * 16777216 - 1);
  return history;
}

QString DiveLogRowText(const QByteArray &page) {
  const DiveTimes t = Times(page, kListStyle);
  return QStringLiteral("%1 %2 %3min").arg(t.date, t.time).arg(t.minutes);
}

QString DiveLogFileBaseName(const QByteArray &page) {
  const DiveTimes t = Times(page, kFileStyle);
  return QStringLiteral("%1_%2_%3").arg(t.date, t.time).arg(t.minutes);
}

int32_t DiveLogDayNumber(const QByteArray &page) {
  using namespace DiveLogPage;
  return JapanDateNumber(&page, kYear, kMonth, kDay, kEntryHour, kEntryMinute);
}

int32_t SearchDateBound(int months, QDate today) {
  if (months <= 0) return kEarliestSearchDate;
  if (months % 12 != 0) {
    int year = today.year();
    int month = today.month() - months;
    if (month < 1) {  // the months reach into last year
      month += 12;
      --year;
    }
    return Wrap32(int64_t{year} * 10000 + int64_t{month} * 100 + today.day());
  }
  const int64_t year = int64_t{today.year()} - months / 12;
  if (year < 2022) return kEarliestSearchDate;
  return Wrap32(year * 10000 + today.month() * 100 + today.day());
}
