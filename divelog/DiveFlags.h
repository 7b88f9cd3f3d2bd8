#pragma once

#include <QStringList>
#include <array>
#include <cstdint>

// The names of the flag bits of a dive and of its samples, in one table each: the device's
// own word (as the CSV file writes it) and the string-table key of the reader's word. The
// summary and the samples name their bits differently: 0x20 is a maximum-depth warning in
// the summary, a depth alarm in a sample.
struct DiveFlag {
  int32_t mask;
  const char *deviceWord;  // "SLOW"
  const char *key;         // "flag_slow"
};

inline constexpr std::array<DiveFlag, 7> kDiveWarningFlags = {
    {{0x01, "SLOW", "flag_slow"},
     {0x02, "DECO", "flag_deco"},
     {0x04, "DECO_DEPTH", "flag_deco_depth"},
     {0x08, "PO2", "flag_po2"},
     {0x10, "O2", "flag_o2"},
     {0x20, "MAX_DEPTH", "flag_max_depth"},
     {0x80, "OUT_OF_RANGE", "flag_out_of_range"}}};
inline constexpr std::array<DiveFlag, 7> kSampleWarningFlags = {
    {{0x01, "SLOW", "flag_slow"},
     {0x02, "DECO", "flag_deco"},
     {0x04, "DEPTH", "flag_deco_depth"},
     {0x08, "PO2", "flag_po2"},
     {0x10, "O2", "flag_o2"},
     {0x20, "DALM", "flag_depth_alarm"},
     {0x80, "OUT", "flag_out_of_range"}}};
inline constexpr std::array<DiveFlag, 4> kInformationFlags = {
    {{0x04, "SENSOR_ERROR", "flag_sensor_error"},
     {0x08, "BATTERY_LOW", "flag_battery_low"},
     {0x10, "TEMPERATURE_ERROR", "flag_temperature_error"},
     {0x20, "DEVICE_ERROR", "flag_device_error"}}};

// The flags set in the reader's language, in table order. A bit without a name reads
// "Other (code 0x40)".
QStringList DiveWarningWords(int32_t flags);
QStringList SampleWarningWords(int32_t flags);
QStringList InformationWords(int32_t flags);
