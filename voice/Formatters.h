#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <optional>

// General formatters kept with the voice functions for the device's identifiers.

// 16 bytes as 32 upper-case hex digits, first byte first; none for any other length.
std::optional<QString> byteArrayToString(const QByteArray &bytes);

// The eight nibbles of value, least significant first: 0x12345678 gives "87654321".
QString NibbleHexString(int32_t value);

// Every 3 bytes of the first length bytes become 4 characters of 6 bits each, offset by
// 32 (so 0 is a blank). None when length is not a multiple of 3 or exceeds the buffer.
std::optional<QByteArray> SixBitTextEncode(const QByteArray &bytes, int length);
