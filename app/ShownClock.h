#pragma once

#include <QDateTime>
#include <QString>

// The one clock the window shows every time on. The device's clock runs on UTC, and its own
// tools show its times in Japan time; a diver elsewhere may want the computer's time zone.
// File names and the command line keep Japan time and the device's clock, whatever is chosen.
enum class ShownClock { Japan, Computer };

// The clock the diver chose, kept in the program's settings; Japan time until they choose.
ShownClock ChosenClock();
void SetChosenClock(ShownClock clock);

// An instant (a time on the device's clock, which runs on UTC) as the diver reads it.
QDateTime OnClock(const QDateTime &instant, ShownClock clock);

// The clock's short name, for the lists' captions and the summary: "Japan time".
QString ClockName(ShownClock clock);
// The clock as the preferences offer it: "Japan time (as the device's tools show it)".
QString ClockChoice(ShownClock clock);
