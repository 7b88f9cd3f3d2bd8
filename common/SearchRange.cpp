#include "SearchRange.h"

#include <QRegularExpression>
#include <algorithm>

std::optional<int> ParseSearchRange(const QString &text) {
  static const QRegularExpression form(
      QStringLiteral(R"(^\s*(\d{1,3})\s*(?:(m|months?|か月)|(y|years?|年))\s*$)"),
      QRegularExpression::CaseInsensitiveOption);
  const QRegularExpressionMatch match = form.match(text);
  if (!match.hasMatch()) return std::nullopt;
  const int months = match.captured(1).toInt() * (match.hasCaptured(3) ? 12 : 1);
  if (std::find(kSearchRangeMonths.begin(), kSearchRangeMonths.end(), months) ==
      kSearchRangeMonths.end()) {
    return std::nullopt;
  }
  return months;
}
