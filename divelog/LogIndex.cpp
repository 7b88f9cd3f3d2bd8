#include "LogIndex.h"

#include "DiveLogPage.h"
#include "FieldDecoders.h"
#include "TextValues.h"

namespace {

int32_t Signed(char byte) {
  return static_cast<int8_t>(byte);
}
constexpr int32_t kEarliestSearchDate = 20220101;

// Date and time styles: list text, or file names.
enum Style { kListStyle, kFileStyle };

struct DiveTimes {
  QString date, time;
  int minutes;
};

DiveTimes Times(const DiveRecord &dive, Style style) {
  const bool list = style == kListStyle;
  const QDateTime entry = dive.entryJapanTime();
  if (!entry.isValid()) {
    return {list ? QStringLiteral("0000/00/00") : QStringLiteral("0000-00-00"),
            list ? QStringLiteral("00:00") : QStringLiteral("00-00"), dive.diveTimeMinutes};
  }
  return {entry.toString(list ? QStringLiteral("yyyy/MM/dd") : QStringLiteral("yyyy-MM-dd")),
          entry.toString(list ? QStringLiteral("HH:mm") : QStringLiteral("HH-mm")),
          dive.diveTimeMinutes};
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

QString DiveLogRowText(const DiveRecord &dive) {
  const DiveTimes t = Times(dive, kListStyle);
  return QStringLiteral("%1 %2 %3min").arg(t.date, t.time).arg(t.minutes);
}

QString DiveLogFileBaseName(const DiveRecord &dive) {
  const DiveTimes t = Times(dive, kFileStyle);
  return QStringLiteral("%1_%2_%3").arg(t.date, t.time).arg(t.minutes);
}

DiveRow ListedDive(int32_t number, const DiveRecord &dive) {
  return {number,
          DiveLogRowText(dive),
          dive.entry,
          dive.exit,
          dive.diveTimeMinutes,
          dive.maxDepthMetres(),
          dive.lowestTemperatureCelsius(),
          dive.damage};
}

int32_t DiveLogDayNumber(const DiveRecord &dive) {
  const QDateTime entry = dive.entryJapanTime();
  if (!entry.isValid()) return kEarliestSearchDate;
  const QDate day = entry.date();
  return day.year() * 10000 + day.month() * 100 + day.day();
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
