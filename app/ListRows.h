#pragma once

#include <QString>
#include <QStringList>

#include "DeviceState.h"
#include "ShownClock.h"

// How the window lists a clip or a dive, on the clock the diver chose. The device's own row
// texts (in file names and the command line) stay as the device's tools write them.

// A clip's length as the audio it holds: its 16-bit samples at 8000 Hz, "m:ss".
QString ClipLengthText(qint64 audioBytes);
// "2026/11/23 08:45  3:24": when the clip began, and its length.
QString ClipRowText(const ClipRow &clip, ShownClock clock);
// "2026/11/23 08:30  45 min": when the dive began, and its dive time. A page that makes
// no date shows its time as zeros.
QString DiveRowText(const DiveRow &dive, ShownClock clock);
// The dive list's further columns: the deepest point and the coldest water, or "damaged".
QStringList DiveRowDetails(const DiveRow &dive);
// The one rounding of a water temperature, for the list and the summary alike: "21.5 °C".
QString CelsiusText(double celsius);
// A depth as the list and the summary show it: "18.4 m".
QString MetresText(double metres);
