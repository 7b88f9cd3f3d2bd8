#include "DiveFlags.h"

#include "Localization.h"

namespace {

template <size_t N>
QStringList Words(const std::array<DiveFlag, N> &table, int32_t flags) {
  QStringList words;
  int32_t named = 0;
  for (const DiveFlag &flag : table) {
    named |= flag.mask;
    if (flags & flag.mask) words << Localized(flag.key);
  }
  const int32_t other = flags & ~named;
  for (int32_t bit = 1; bit <= other; bit <<= 1) {
    if (other & bit) {
      words << Localized("flag_other").arg(QStringLiteral("0x%1").arg(bit, 2, 16, QChar(u'0')));
    }
  }
  return words;
}

}  // namespace

QStringList DiveWarningWords(int32_t flags) {
  return Words(kDiveWarningFlags, flags);
}

QStringList SampleWarningWords(int32_t flags) {
  return Words(kSampleWarningFlags, flags);
}

QStringList InformationWords(int32_t flags) {
  return Words(kInformationFlags, flags);
}
