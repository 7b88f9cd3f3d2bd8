#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringList>
#include <QStringView>
#include <cstdint>

// Readers for the numbers inside device texts. Each reads the longest valid prefix and
// never fails: the device's replies are trusted as far as they parse and no further.

// Leading blanks, an optional sign, then decimal digits; anything else ends the number.
// Saturates at the 32-bit bounds; no digits read as 0.
int32_t IntValue(QStringView text);

// A decimal number with a point, read the same under every locale: the longest prefix
// that reads as one ("1.2.3" reads 1.2); nothing readable reads 0.
double LeadingDecimal(QStringView text);

// Hexadecimal digits from the start; the first other character ends the number. An empty
// text reads as 0; values past 32 bits saturate at 0xFFFFFFFF.
uint32_t HexValue(QStringView text);

// The device's arithmetic is 32-bit and wraps; so does ours where it follows the device.
inline int32_t Wrap32(int64_t value) {
  return static_cast<int32_t>(static_cast<uint32_t>(value));
}

// The bytes as UTF-8 text; a null QString when they are not valid UTF-8 (valid empty
// input gives an empty, non-null text).
QString DecodeUtf8Strict(QByteArrayView bytes);

// A reply's fields, split at each single blank; none for a null text (bytes that were not
// UTF-8).
QStringList SplitAtBlanks(const QString &text);

// Splits at every character of separators, keeping empty pieces.
QStringList SplitAtAnyOf(QStringView text, QStringView separators);

// "(a,b,c)": how a list of pieces appears in the log.
QString DescribeList(const QStringList &pieces);
