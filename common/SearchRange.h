#pragma once

#include <QString>
#include <array>
#include <optional>

// The period the device's lists show, counted back from today, in months. The window
// offers these six, in this order; a whole number of years counts back in years.
inline constexpr std::array<int, 6> kSearchRangeMonths{1, 3, 6, 12, 24, 60};
inline constexpr int kLongestSearchRangeMonths = kSearchRangeMonths.back();

// The months a range's text names, in any locale: "3 months", "3m", "1 year", "1y",
// "5 years", or the window's own Japanese ("3 か月", "1 年"). Nothing for a text that
// names none of the six.
std::optional<int> ParseSearchRange(const QString &text);
