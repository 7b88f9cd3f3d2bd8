#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <cstdint>
#include <stdexcept>

// Readers for single fields of the device's binary records. A missing record (nullptr)
// reads as zeros, each call logging it; an index outside a present record throws
// DataRangeError, which the CSV writer catches to end its file early.

class DataRangeError : public std::out_of_range {
 public:
  using std::out_of_range::out_of_range;
};

// Unsigned byte (0..255).
int32_t PageByte(const QByteArray *data, int32_t index);
// Unsigned 16-bit little-endian word (0..65535).
int32_t PageWord(const QByteArray *data, int32_t index);
// The byte as two packed BCD digits, unchecked: 0xFF reads 165, 0x1A reads 20.
int32_t bcd2bin(const QByteArray *data, int32_t index);

// The device's clock runs on UTC, while divers read its times in Japan time: the five BCD
// bytes are read as a UTC instant and shown at UTC+9. The single date 99-12-31 is the
// device's mark for an unset clock and lies in 1999; every other year in 2000-2099.
// The instant is invalid, and logged, when the bytes make no valid date.
QDateTime DeviceClockUtc(const QByteArray *data, int32_t year, int32_t month, int32_t day,
                         int32_t hour, int32_t minute);
// An instant as divers read it.
QDateTime InJapanTime(const QDateTime &instant);
