#pragma once

#include <QByteArray>
#include <QDate>
#include <QDateTime>
#include <QString>
#include <QVector>
#include <cstdint>
#include <optional>

namespace sim {

// A clip as the device's index lists it: start time and block range in the ring.
struct Clip {
  QDateTime start;  // the device's clock
  int startBlock = 0;
  int endBlock = 0;
  uint32_t toneSeed = 0;  // picks the tone sequence the clip plays
};

struct Sample {
  int depthCm = 0;
  int temperatureDeci = 0;  // signed tenths
  int gasPressure = 0;
  int n2 = 0, o2 = 0;  // 0..15
  int oxygenPercent = 21;
  int warnings = 0;
};

struct Dive {
  QDateTime entry;  // the device's clock, which runs on UTC
  QDateTime exit;
  bool unsetClock = false;  // dated 99-12-31, the device's mark for a clock never set
  int samplingSeconds = 10;
  int diveMinutes = 0;
  int dayCount = 1, cns = 0, warnings = 0, information = 0, safetyFactor = 0;
  int entryPressureByte = 198;  // x 5.12 hPa
  int oxygenPercent = 21;
  int bodyNitrogen[16] = {};
  int maxDepthCm = 0, averageDepthCm = 0, temperatureDeci = 0, otu = 0;
  QVector<Sample> profile;
  std::optional<int> profileSizeWord;  // sent in place of the profile's length
};

// Everything the simulated device holds.
struct Contents {
  QByteArray model = "QM482CS";
  QByteArray firmware = "1.180";
  int detailFields = 6;  // 6 or 7
  QByteArray serialNumber = "28417305";
  int ringFirst = 2, ringLast = 1959;
  QVector<Clip> clips;
  // The dives the device still holds, oldest first; the newest is number totalDives - 1.
  QVector<Dive> dives;
  int historyNumber = 1;
  int totalDives = 0;                // dives ever recorded
  std::optional<int> heldCountWord;  // sent in place of dives.size()

  int firstHeldDive() const { return totalDives - static_cast<int>(dives.size()); }
  const Dive *dive(int number) const;
};

// Seeded contents around a given day: clips before and after 2022-01-01, one too short to
// list, one across the ring's hole and one that wraps the ring; dives with realistic
// profiles, one below zero, one filling the profile area, one with the unset-clock date.
Contents GenerateContents(uint32_t seed, QDate today);

// One dive with a generated profile; temperatures in signed tenths, depth in centimetres.
Dive GenerateDive(uint32_t seed, const QDateTime &entry, int minutes, int samplingSeconds,
                  int maxDepthCm, int surfaceDeci, int bottomDeci);

// Wire forms.
QByteArray VoiceIndexReply(const Contents &contents);
QByteArray ClipEntry(const Clip &clip);
int ClipBytes(const Clip &clip, int ringFirst, int ringLast);
QByteArray ClipAudio(const Clip &clip, int ringFirst, int ringLast);
QByteArray DivePage(const Dive &dive);
QByteArray ErasedPage();
QByteArray HistoryRecord(const Contents &contents);

}  // namespace sim
