#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "DeviceState.h"
#include "DiveLogPage.h"

// One profile sample: the device's values as they are, and the same in plain units.
struct DiveSample {
  int32_t seconds = 0;          // from the start of the dive
  int32_t depthWord = 0;        // hundredths of a metre
  int32_t temperatureWord = 0;  // signed tenths of a degree in an unsigned word
  int32_t gasPressure = 0;
  int32_t nitrogenOxygen = 0;  // n2 level in the high nibble, o2 level in the low
  int32_t oxygenPercent = 0;
  int32_t warningFlags = 0;

  double depthMetres() const { return depthWord / 100.0; }
  float temperatureCelsius() const { return DeviceTemperature(temperatureWord); }
  int32_t nitrogenLevel() const { return nitrogenOxygen >> 4; }
  int32_t oxygenLevel() const { return nitrogenOxygen & 0x0F; }
};

// How much of what the page promises it holds.
enum class PageReach {
  Whole,
  // The profile size reaches past the page: the samples stop before the first one that
  // is not in it. The device's size is trusted all the same, as its own tools do.
  EndsInProfile,
  // The page is too short for its summary: it holds no dive.
  EndsInSummary,
};

// One dive, decoded once from its page; the CSV file and every other view of the dive
// read this value. The raw fields keep the device's numbers so that the CSV can be
// written exactly as before; the functions give them in plain units.
struct DiveRecord {
  QDateTime entry;  // on the device's clock (UTC); invalid when the bytes make no date
  QDateTime exit;   // on the entry's day, or the next when it would come before the entry
  int32_t samplingInterval = 0;  // seconds from one sample to the next
  int32_t dayCount = 0;
  int32_t cns = 0;
  int32_t warningFlags = 0;
  int32_t informationFlags = 0;
  int32_t safetyFactor = 0;
  int32_t entryPressureByte = 0;  // x 5.12 gives hPa
  int32_t oxygenPercent = 0;
  std::array<int32_t, DiveLogPage::kBodyNitrogenCount> bodyNitrogen{};
  int32_t diveTimeMinutes = 0;
  int32_t maxDepthWord = 0;      // hundredths of a metre
  int32_t averageDepthWord = 0;  // hundredths of a metre
  int32_t temperatureWord = 0;   // signed tenths of a degree in an unsigned word
  int32_t profileSize = 0;       // as the device gives it, beyond the profile area or not
  int32_t otu = 0;
  // Samples past the profile area are made of summary bytes, as the device's size says.
  QList<DiveSample> samples;
  PageReach reach = PageReach::Whole;
  std::string pageEnd;  // when the page ran out: the range error of the first read past it
  std::optional<PageDamage> damage;  // what no device could have recorded, if anything

  // Divers read the device's times in Japan time.
  QDateTime entryJapanTime() const;
  QDateTime exitJapanTime() const;
  int32_t diveTimeSeconds() const { return diveTimeMinutes * 60; }
  double maxDepthMetres() const { return maxDepthWord / 100.0; }
  double averageDepthMetres() const { return averageDepthWord / 100.0; }
  float temperatureCelsius() const { return DeviceTemperature(temperatureWord); }
  // The coldest water of the samples, or the summary's temperature when there are none.
  float lowestTemperatureCelsius() const;
  // Worked in single precision, as the device's own tools do: 198 gives 1013.76.
  float entryPressureHectopascals() const { return static_cast<float>(entryPressureByte) * 5.12f; }
};

// The dive held by a 4096-byte page, and whether the page is damaged. A missing page
// (nullptr) reads as zeros, each field logging it, and holds no dive.
DiveRecord DecodeDive(const QByteArray *page);

// A page as the device sent it, kept with the dive decoded from it once: whatever is
// shown, saved or exported of the page reads the dive; the bytes are kept for the library.
struct DecodedPage {
  QByteArray bytes;
  DiveRecord dive;
};
DecodedPage DecodePage(const QByteArray &bytes);

// How far into the dive a moment on the device's clock falls: its seconds from the entry
// when it lies between the entry and the exit (both included), compared as instants. None
// for a moment outside the dive, an invalid moment, or a dive without a valid entry; a dive
// without a valid exit ends its dive time after the entry. Voice clips are placed on a
// dive by this rule wherever they are shown or exported.
std::optional<int64_t> SecondsIntoDive(const DiveRecord &dive, const QDateTime &moment);

// Elapsed dive time as "m:ss" (minutes may exceed 59).
QString ElapsedText(int64_t seconds);
