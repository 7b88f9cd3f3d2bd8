#include "ListRows.h"

#include "DiveRecord.h"
#include "Localization.h"

namespace {

// The clips are 16-bit mono samples at 8000 Hz.
constexpr qint64 kAudioBytesPerSecond = 8000 * 2;

QString ListedTime(const QDateTime &instant, ShownClock clock) {
  if (!instant.isValid()) return QStringLiteral("0000/00/00 00:00");
  return OnClock(instant, clock).toString(QStringLiteral("yyyy/MM/dd HH:mm"));
}

}  // namespace

QString ClipLengthText(qint64 audioBytes) {
  return ElapsedText(std::max<qint64>(0, audioBytes) / kAudioBytesPerSecond);
}

QString ClipRowText(const ClipRow &clip, ShownClock clock) {
  return QStringLiteral("%1  %2").arg(ListedTime(clip.start, clock), ClipLengthText(clip.bytes));
}

QString DiveRowText(const DiveRow &dive, ShownClock clock) {
  return QStringLiteral("%1  %2").arg(ListedTime(dive.entry, clock),
                                      Localized("unit_minutes").arg(dive.minutes));
}

QStringList DiveRowDetails(const DiveRow &dive) {
  if (dive.damage) return {Localized("row_damaged")};
  return {MetresText(dive.maxDepthMetres), CelsiusText(dive.temperatureCelsius)};
}

QString CelsiusText(double celsius) {
  return Localized("unit_celsius").arg(celsius, 0, 'f', 1);
}

QString MetresText(double metres) {
  return Localized("unit_metres").arg(metres, 0, 'f', 1);
}
