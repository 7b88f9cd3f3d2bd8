#include "TextValues.h"

#include <charconv>

#include <QStringDecoder>

#include <limits>

int32_t IntValue(QStringView text) {
  qsizetype i = 0;
  while (i < text.size() && text[i].isSpace()) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) negative = text[i++] == u'-';
  int64_t value = 0;
  for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i) {
    value = value * 10 + (text[i].unicode() - u'0');
    if (value > int64_t{std::numeric_limits<int32_t>::max()} + 1) break;
  }
  if (negative) value = -value;
  if (value > std::numeric_limits<int32_t>::max()) return std::numeric_limits<int32_t>::max();
  if (value < std::numeric_limits<int32_t>::min()) return std::numeric_limits<int32_t>::min();
  return static_cast<int32_t>(value);
}

uint32_t HexValue(QStringView text) {
  uint64_t value = 0;
  for (QChar c : text) {
    int digit;
    if (c >= u'0' && c <= u'9')
      digit = c.unicode() - u'0';
    else if (c >= u'a' && c <= u'f')
      digit = c.unicode() - u'a' + 10;
    else if (c >= u'A' && c <= u'F')
      digit = c.unicode() - u'A' + 10;
    else
      break;
    value = value * 16 + static_cast<uint64_t>(digit);
    if (value > std::numeric_limits<uint32_t>::max()) return std::numeric_limits<uint32_t>::max();
  }
  return static_cast<uint32_t>(value);
}

QStringList SplitAtAnyOf(QStringView text, QStringView separators) {
  QStringList pieces;
  qsizetype start = 0;
  for (qsizetype i = 0; i < text.size(); ++i) {
    if (separators.contains(text[i])) {
      pieces.append(text.mid(start, i - start).toString());
      start = i + 1;
    }
  }
  pieces.append(text.mid(start).toString());
  return pieces;
}

QString DescribeList(const QStringList &pieces) {
  return u'(' + pieces.join(u',') + u')';
}

QString DecodeUtf8Strict(QByteArrayView bytes) {
  QStringDecoder utf8(QStringDecoder::Utf8, QStringConverter::Flag::Stateless);
  const QString text = utf8.decode(bytes);
  if (utf8.hasError()) return {};
  return text.isNull() ? QStringLiteral("") : text;
}

double LeadingDecimal(QStringView text) {
  const QByteArray bytes = text.toLatin1();
  double value = 0;
  const std::from_chars_result read =
      std::from_chars(bytes.constData(), bytes.constData() + bytes.size(), value);
  return read.ec == std::errc() ? value : 0.0;
}

QStringList SplitAtBlanks(const QString &text) {
  return text.isNull() ? QStringList() : text.split(u' ');
}
