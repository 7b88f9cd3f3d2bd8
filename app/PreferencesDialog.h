#pragma once

#include <optional>

#include "ShownClock.h"

class QWidget;

// The window's preferences: which clock every time is shown on. Returns the clock chosen,
// none when the diver cancels.
std::optional<ShownClock> AskShownClock(QWidget *parent, ShownClock current);
