#pragma once

#include <cstdint>

// One dive as the device sends it: a 4096-byte page, depth profile from the start,
// summary at the end. Words are unsigned 16-bit little-endian, dates and times packed BCD.
namespace DiveLogPage {

inline constexpr int32_t kBytes = 4096;
inline constexpr int32_t kSampleBytes = 8;
inline constexpr int32_t kProfileAreaSamples = 504;

// Summary fields.
inline constexpr int32_t kEntryMinute = 4032;
inline constexpr int32_t kEntryHour = 4033;
inline constexpr int32_t kExitMinute = 4034;
inline constexpr int32_t kExitHour = 4035;
inline constexpr int32_t kDay = 4036;
inline constexpr int32_t kMonth = 4037;
inline constexpr int32_t kYear = 4038;
inline constexpr int32_t kSamplingInterval = 4039;
inline constexpr int32_t kDayCount = 4040;
inline constexpr int32_t kCns = 4041;
inline constexpr int32_t kWarningFlags = 4042;
inline constexpr int32_t kInformationFlags = 4043;
inline constexpr int32_t kSafetyFactor = 4044;
inline constexpr int32_t kEntryPressure = 4045;  // x 5.12 gives hPa
inline constexpr int32_t kOxygenPercent = 4046;
inline constexpr int32_t kBodyNitrogen = 4048;  // 16 tissue values
inline constexpr int32_t kBodyNitrogenCount = 16;
inline constexpr int32_t kDiveTimeMinutes = 4064;
inline constexpr int32_t kMaxDepth = 4066;      // hundredths
inline constexpr int32_t kAverageDepth = 4068;  // hundredths
inline constexpr int32_t kTemperature = 4070;   // signed tenths
inline constexpr int32_t kProfileSize = 4072;   // samples
inline constexpr int32_t kOtu = 4074;

// Fields of a profile sample, from its start.
inline constexpr int32_t kSampleDepth = 0;        // word, hundredths
inline constexpr int32_t kSampleTemperature = 2;  // word, signed tenths
inline constexpr int32_t kSampleGasPressure = 4;
inline constexpr int32_t kSampleNitrogenOxygen = 5;  // n2 high nibble, o2 low nibble
inline constexpr int32_t kSampleOxygenPercent = 6;
inline constexpr int32_t kSampleWarningFlags = 7;

}  // namespace DiveLogPage

// A temperature word in signed tenths, worked in single precision on the quotient as the
// device's own tools do: 215 gives 21.5, 65526 gives -1.0.
inline float DeviceTemperature(int32_t word) {
  float celsius = static_cast<float>(word) / 10.0f;
  if (celsius >= 3276.8f) celsius -= 6553.6f;
  return celsius;
}
