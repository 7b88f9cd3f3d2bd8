#include "FieldDecoders.h"

#include <QDateTime>
#include <QTimeZone>

#include "SystemLog.h"

namespace {

// Japan has kept UTC+9 without daylight saving since 1951, which covers every date the
// device can hold; a fixed offset needs no time-zone database on the machine.
const QTimeZone &JapanTime() {
  static const QTimeZone zone(9 * 3600);
  return zone;
}

uint8_t ByteAt(const QByteArray &data, int32_t index) {
  if (index < 0 || index >= data.size()) {
    throw DataRangeError("range {" + std::to_string(index) + ", 1} exceeds data length " +
                         std::to_string(data.size()));
  }
  return static_cast<uint8_t>(data[index]);
}

}  // namespace

QDateTime DeviceClockUtc(const QByteArray *data, int32_t yearIndex, int32_t monthIndex,
                         int32_t dayIndex, int32_t hourIndex, int32_t minuteIndex) {
  const int year = bcd2bin(data, yearIndex);
  const int month = bcd2bin(data, monthIndex);
  const int day = bcd2bin(data, dayIndex);
  const int hour = bcd2bin(data, hourIndex);
  const int minute = bcd2bin(data, minuteIndex);
  const bool unsetClock = year == 99 && month == 12 && day == 31;
  // Values that do not fit "yyyy/MM/dd HH:mm" (three-digit BCD readings, month 0, 25
  // o'clock) make no date.
  const QDate date((unsetClock ? 1900 : 2000) + year, month, day);
  const QTime time(hour, minute);
  if (year > 99 || !date.isValid() || !time.isValid()) {
    SystemLog("NSDataToNSDateJST:nil!. %02d/%02d/%02d %02d:%02d:00", year, month, day, hour,
              minute);
    return {};
  }
  return QDateTime(date, time, QTimeZone::utc());
}

QDateTime InJapanTime(const QDateTime &instant) {
  return instant.toTimeZone(JapanTime());
}

int32_t PageByte(const QByteArray *data, int32_t index) {
  if (data == nullptr) {
    SystemLog("NSDataToInt:start=%d data is nil!", index);
    return 0;
  }
  return ByteAt(*data, index);
}

int32_t PageWord(const QByteArray *data, int32_t index) {
  if (data == nullptr) {
    SystemLog("NSData2ToInt:start=%d data is nil!", index);
    return 0;
  }
  const int32_t low = ByteAt(*data, index);
  return low | ByteAt(*data, index + 1) << 8;
}

int32_t bcd2bin(const QByteArray *data, int32_t index) {
  if (data == nullptr) {
    SystemLog("bcd2bin:start=%d data is nil!", index);
    return 0;
  }
  const uint8_t byte = ByteAt(*data, index);
  return (byte & 0x0F) + (byte >> 4) * 10;
}
