#include "ShownClock.h"

#include <QSettings>

#include "FieldDecoders.h"
#include "Localization.h"

namespace {

const QString kSetting = QStringLiteral("window/clock");

}  // namespace

ShownClock ChosenClock() {
  return QSettings().value(kSetting).toString() == u"computer" ? ShownClock::Computer
                                                               : ShownClock::Japan;
}

void SetChosenClock(ShownClock clock) {
  QSettings().setValue(kSetting, clock == ShownClock::Computer ? QStringLiteral("computer")
                                                               : QStringLiteral("japan"));
}

QDateTime OnClock(const QDateTime &instant, ShownClock clock) {
  return clock == ShownClock::Computer ? instant.toLocalTime() : InJapanTime(instant);
}

QString ClockName(ShownClock clock) {
  return Localized(clock == ShownClock::Computer ? "clock_computer" : "clock_japan");
}

QString ClockChoice(ShownClock clock) {
  return Localized(clock == ShownClock::Computer ? "clock_computer_choice" : "clock_japan_choice");
}
