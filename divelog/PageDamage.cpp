#include "PageDamage.h"

#include <algorithm>

#include "DiveRecord.h"
#include "Localization.h"

namespace {

using namespace DiveLogPage;

constexpr float kColdestWater = -5.0f;
constexpr float kWarmestWater = 50.0f;

// Both digits of a packed byte are decimal.
bool PackedDecimal(const QByteArray &page, int32_t at) {
  const auto byte = static_cast<uint8_t>(page.at(at));
  return (byte >> 4) <= 9 && (byte & 0x0F) <= 9;
}

bool AllPackedDecimal(const QByteArray &page, std::initializer_list<int32_t> offsets) {
  return std::all_of(offsets.begin(), offsets.end(),
                     [&page](int32_t at) { return PackedDecimal(page, at); });
}

}  // namespace

std::optional<PageDamage> FindPageDamage(const QByteArray &page, const DiveRecord &dive) {
  // A packed digit above 9 still reads as a number (0x1A as 20): the bytes are checked too.
  if (!dive.entry.isValid() ||
      !AllPackedDecimal(page, {kYear, kMonth, kDay, kEntryHour, kEntryMinute}))
    return PageDamage::EntryOffCalendar;
  if (!dive.exit.isValid() || !AllPackedDecimal(page, {kExitHour, kExitMinute}))
    return PageDamage::ExitOffCalendar;
  if (dive.averageDepthWord > dive.maxDepthWord) return PageDamage::AverageBelowMaximum;
  const float water = dive.temperatureCelsius();
  if (water < kColdestWater || water > kWarmestWater) return PageDamage::WaterTemperature;
  return std::nullopt;
}

QString DamageText(PageDamage damage) {
  switch (damage) {
    case PageDamage::EntryOffCalendar:
      return Localized("damage_entry");
    case PageDamage::ExitOffCalendar:
      return Localized("damage_exit");
    case PageDamage::AverageBelowMaximum:
      return Localized("damage_depth");
    case PageDamage::WaterTemperature:
      return Localized("damage_water");
    case PageDamage::Short:
      break;
  }
  return Localized("damage_short");
}

QString DamagedPageSaved(PageDamage damage) {
  return Localized("dive_damaged_saved").arg(DamageText(damage));
}
