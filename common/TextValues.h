#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>
#include <cstdint>

// Readers for the numbers inside device texts. Each reads the longest valid prefix and
// never fails: the device's replies are trusted as far as they parse and no further.

// Leading blanks, an optional sign, then decimal digits; anything else ends the number.
// Saturates at the 32-bit bounds; no digits read as 0.
int32_t IntValue(QStringView text);

// Hexadecimal digits from the start; the first other character ends the number. An empty
// text reads as 0; values past 32 bits saturate at 0xFFFFFFFF.
uint32_t HexValue(QStringView text);

// Splits at every character of separators, keeping empty pieces.
QStringList SplitAtAnyOf(QStringView text, QStringView separators);

// "(a,b,c)": how a list of pieces appears in the log.
QString DescribeList(const QStringList &pieces);
