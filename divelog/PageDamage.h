#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

#include "DeviceState.h"

struct DiveRecord;

// Whether a page's summary is one no device could have recorded: a date or a time that is
// not on the calendar (month 0 or 13, day 0, 25 o'clock, a packed digit above 9), an
// average depth deeper than the maximum, or water colder than -5 °C or warmer than 50 °C.
// Odd but possible dives are not damaged: a clock never set (2000) or set wrong (the
// future), no minutes or no samples, any depth, a profile size past the page's slots.
// page is the one the dive was decoded from, whole to its summary.
std::optional<PageDamage> FindPageDamage(const QByteArray &page, const DiveRecord &dive);

// Why the page is damaged, in the diver's language.
QString DamageText(PageDamage damage);
// What a diver who asked for a damaged page hears before it is saved as the device gave it.
QString DamagedPageSaved(PageDamage damage);
