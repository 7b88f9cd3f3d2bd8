#pragma once

#include <QByteArray>
#include <QDate>
#include <QString>
#include <cstdint>

#include "DiveRecord.h"

// The log history record, the device's reply to "lh": 32 bytes that say how many dives it
// holds and the number of the newest.
struct LogHistory {
  int32_t historyNumber = 0;
  int32_t numberOf = 0;  // dives held: how many the listing fetches at most
  int32_t start = 0;     // number of the newest dive (dives are numbered from 0)
};

inline constexpr int kLogHistoryBytes = 32;

// Combines the fields as the device's own tools always have: each byte sign-extended
// before it is combined, so a low byte of 0x80 or more makes a count negative (0x90 0x00
// reads -112, and no dives are listed) and the lower three bytes of the recorded count
// each count from -128 to 127. Byte 27 is taken unsigned.
LogHistory DecodeLogHistory(const char *record);

// The dive list's row for a dive, "2023/11/05 23:00 45min", and its file name's base,
// "2023-11-05_23-00_45", both in Japan time. A date the device could not have meant
// shows as zeros.
QString DiveLogRowText(const DiveRecord &dive);
QString DiveLogFileBaseName(const DiveRecord &dive);
// The dive's row of the dive list, numbered by its history number.
DiveRow ListedDive(int32_t number, const DiveRecord &dive);
// The dive's day in Japan time, yyyymmdd, as the date range compares it; 20220101 when
// its page makes no date.
int32_t DiveLogDayNumber(const DiveRecord &dive);

// The earliest day (yyyymmdd) the lists show for a range of months (one of
// kSearchRangeMonths), counted back from today: a whole number of years counts back in
// years and never reaches before 2022-01-01; the other ranges count back in months. No
// range (0) gives 20220101.
int32_t SearchDateBound(int months, QDate today);
