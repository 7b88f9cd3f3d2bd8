#include "Formatters.h"

#include "SystemLog.h"

std::optional<QString> byteArrayToString(const QByteArray &bytes) {
  if (bytes.size() != 16) {
    SystemLog("byteArrayToString size error! %lu", static_cast<unsigned long>(bytes.size()));
    return std::nullopt;
  }
  return QString::fromLatin1(bytes.toHex().toUpper());
}

QString NibbleHexString(int32_t value) {
  QString text;
  for (int i = 0; i < 8; ++i) {
    text += QChar(u"0123456789ABCDEF"[value & 0xF]);
    value >>= 4;
  }
  return text;
}

std::optional<QByteArray> SixBitTextEncode(const QByteArray &bytes, int length) {
  if (length < 0 || length % 3 != 0 || length > bytes.size()) return std::nullopt;
  QByteArray text;
  text.reserve(length / 3 * 4);
  for (int i = 0; i < length; i += 3) {
    const uint32_t v = uint32_t(uint8_t(bytes[i])) << 16 | uint32_t(uint8_t(bytes[i + 1])) << 8 |
                       uint8_t(bytes[i + 2]);
    for (int shift : {18, 12, 6, 0}) text += char(((v >> shift) & 63) + 32);
  }
  return text;
}
