#include "DiveRecord.h"

#include <algorithm>

#include "FieldDecoders.h"
#include "PageDamage.h"

namespace {

using namespace DiveLogPage;

DiveSample DecodeSample(const QByteArray *page, int32_t at, int32_t seconds) {
  DiveSample sample;
  sample.seconds = seconds;
  // Read first, so that a sample past the page is reported by this byte, as it always was.
  sample.nitrogenOxygen = PageByte(page, at + kSampleNitrogenOxygen);
  sample.depthWord = PageWord(page, at + kSampleDepth);
  sample.temperatureWord = PageWord(page, at + kSampleTemperature);
  sample.gasPressure = PageByte(page, at + kSampleGasPressure);
  sample.oxygenPercent = PageByte(page, at + kSampleOxygenPercent);
  sample.warningFlags = PageByte(page, at + kSampleWarningFlags);
  return sample;
}

// The fields are read in the order the CSV shows them, so that a missing page logs its
// lines in that order.
void DecodeSummary(const QByteArray *page, DiveRecord &dive) {
  const auto byte = [page](int32_t offset) { return PageByte(page, offset); };
  const auto word = [page](int32_t offset) { return PageWord(page, offset); };
  dive.samplingInterval = byte(kSamplingInterval);
  dive.profileSize = word(kProfileSize);
  dive.warningFlags = byte(kWarningFlags);
  dive.informationFlags = byte(kInformationFlags);
  dive.entryPressureByte = byte(kEntryPressure);
  dive.entry = DeviceClockUtc(page, kYear, kMonth, kDay, kEntryHour, kEntryMinute);
  dive.exit = DeviceClockUtc(page, kYear, kMonth, kDay, kExitHour, kExitMinute);
  // The device keeps one date: a dive over midnight (UTC) ends on the next day.
  if (dive.entry.isValid() && dive.exit.isValid() && dive.exit < dive.entry) {
    dive.exit = dive.exit.addDays(1);
  }
  dive.dayCount = byte(kDayCount);
  dive.cns = byte(kCns);
  dive.safetyFactor = byte(kSafetyFactor);
  dive.oxygenPercent = byte(kOxygenPercent);
  dive.diveTimeMinutes = word(kDiveTimeMinutes);
  dive.maxDepthWord = word(kMaxDepth);
  dive.averageDepthWord = word(kAverageDepth);
  dive.temperatureWord = word(kTemperature);
  dive.otu = word(kOtu);
  for (int32_t i = 0; i < kBodyNitrogenCount; ++i) dive.bodyNitrogen[i] = byte(kBodyNitrogen + i);
}

}  // namespace

QDateTime DiveRecord::entryJapanTime() const {
  return InJapanTime(entry);
}

QDateTime DiveRecord::exitJapanTime() const {
  return InJapanTime(exit);
}

float DiveRecord::lowestTemperatureCelsius() const {
  if (samples.isEmpty()) return temperatureCelsius();
  return std::ranges::min(samples, {}, &DiveSample::temperatureCelsius).temperatureCelsius();
}

std::optional<int64_t> SecondsIntoDive(const DiveRecord &dive, const QDateTime &moment) {
  if (!dive.entry.isValid() || !moment.isValid()) return std::nullopt;
  const QDateTime exit =
      dive.exit.isValid() ? dive.exit : dive.entry.addSecs(dive.diveTimeSeconds());
  if (moment < dive.entry || moment > exit) return std::nullopt;
  return dive.entry.secsTo(moment);
}

QString ElapsedText(int64_t seconds) {
  return QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QChar(u'0'));
}

DecodedPage DecodePage(const QByteArray &bytes) {
  return DecodedPage{bytes, DecodeDive(&bytes)};
}

DiveRecord DecodeDive(const QByteArray *page) {
  DiveRecord dive;
  try {
    DecodeSummary(page, dive);
  } catch (const DataRangeError &error) {
    DiveRecord none;
    none.reach = PageReach::EndsInSummary;
    none.pageEnd = error.what();
    none.damage = PageDamage::Short;
    return none;
  }
  dive.damage = page ? FindPageDamage(*page, dive) : PageDamage::EntryOffCalendar;
  // The device's size is taken as it stands; no page holds more than 512 samples, so a
  // larger one ends at the range error.
  try {
    for (int32_t k = 0; k < dive.profileSize; ++k) {
      dive.samples.append(DecodeSample(page, k * kSampleBytes, k * dive.samplingInterval));
    }
  } catch (const DataRangeError &error) {
    dive.reach = PageReach::EndsInProfile;
    dive.pageEnd = error.what();
  }
  return dive;
}
