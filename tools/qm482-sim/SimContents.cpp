#include "SimContents.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimeZone>
#include <QtEndian>
#include <algorithm>
#include <cmath>
#include <random>

namespace sim {

namespace {

constexpr int kBlockBytes = 130560;
constexpr int kHoleFirst = 1000, kHoleLast = 1023;
constexpr int kPageBytes = 4096;
constexpr int kMaxSamples = 504;

uint8_t Bcd(int value) {
  return static_cast<uint8_t>((value / 10) << 4 | (value % 10));
}

void PutWord(QByteArray &bytes, int offset, int value) {
  qToLittleEndian(static_cast<uint16_t>(value), bytes.data() + offset);
}

// A dive profile as a diver makes it: descent at about 15 m/min, time at the bottom,
// ascent at 9 m/min, three minutes of safety stop at 5 m, then the surface.
QVector<Sample> Profile(std::mt19937 &random, int minutes, int sampling, int maxDepthCm,
                        int surfaceDeci, int bottomDeci, int oxygenPercent) {
  const int count = std::min(kMaxSamples, minutes * 60 / sampling);
  const double total = count * sampling;
  const double descent = maxDepthCm / 100.0 / 15.0 * 60.0;
  const double ascent = (maxDepthCm / 100.0 - 5.0) / 9.0 * 60.0;
  const double stopStart = total - 180.0 - 40.0;
  const double bottomEnd = std::max(descent, stopStart - ascent);
  std::uniform_int_distribution<int> wobble(-15, 15);
  QVector<Sample> samples;
  int pressure = 200;
  for (int k = 0; k < count; ++k) {
    const double t = k * sampling;
    double depthM;
    if (t < descent)
      depthM = t / descent * maxDepthCm / 100.0;
    else if (t < bottomEnd)
      depthM = maxDepthCm / 100.0 - 1.5 * std::fabs(std::sin(t / 300.0));
    else if (t < stopStart)
      depthM = 5.0 + (maxDepthCm / 100.0 - 5.0) * (stopStart - t) / (stopStart - bottomEnd);
    else if (t < total - 40.0)
      depthM = 5.0;
    else
      depthM = 5.0 * (total - t) / 40.0;
    Sample s;
    s.depthCm = std::max(0, static_cast<int>(depthM * 100) + (k == 0 ? 0 : wobble(random)));
    const double fraction = std::min(1.0, depthM / (maxDepthCm / 100.0));
    s.temperatureDeci = surfaceDeci + static_cast<int>((bottomDeci - surfaceDeci) * fraction);
    pressure = std::max(30, pressure - (depthM > 1 ? 1 : 0) * (k % 3 == 0 ? 1 : 0));
    s.gasPressure = pressure;
    s.n2 = std::min(15, static_cast<int>(t / total * 10 + depthM / 10));
    s.o2 = std::min(15, static_cast<int>(depthM / 6));
    s.oxygenPercent = oxygenPercent;
    samples.append(s);
  }
  return samples;
}

Dive MakeDive(std::mt19937 &random, QDateTime entry, int minutes, int sampling, int maxDepthCm,
              int surfaceDeci, int bottomDeci) {
  Dive dive;
  dive.entry = entry;
  dive.exit = entry.addSecs(minutes * 60);
  dive.samplingSeconds = sampling;
  dive.diveMinutes = minutes;
  dive.oxygenPercent = (random() % 3 == 0) ? 32 : 21;
  dive.profile =
      Profile(random, minutes, sampling, maxDepthCm, surfaceDeci, bottomDeci, dive.oxygenPercent);
  long sum = 0;
  for (const Sample &s : dive.profile) {
    sum += s.depthCm;
    dive.maxDepthCm = std::max(dive.maxDepthCm, s.depthCm);
  }
  dive.averageDepthCm = dive.profile.isEmpty() ? 0 : static_cast<int>(sum / dive.profile.size());
  dive.temperatureDeci = bottomDeci;
  dive.cns = static_cast<int>(random() % 30);
  dive.otu = minutes / 3 + static_cast<int>(random() % 10);
  dive.safetyFactor = static_cast<int>(random() % 3);
  dive.entryPressureByte = 196 + static_cast<int>(random() % 5);
  for (int i = 0; i < 16; ++i) dive.bodyNitrogen[i] = 60 + static_cast<int>(random() % 120);
  return dive;
}

}  // namespace

const Dive *Contents::dive(int number) const {
  const int index = number - firstHeldDive();
  return index >= 0 && index < dives.size() ? &dives[index] : nullptr;
}

Dive GenerateDive(uint32_t seed, const QDateTime &entry, int minutes, int samplingSeconds,
                  int maxDepthCm, int surfaceDeci, int bottomDeci) {
  std::mt19937 random(seed);
  return MakeDive(random, entry, minutes, samplingSeconds, maxDepthCm, surfaceDeci, bottomDeci);
}

Contents GenerateContents(uint32_t seed, QDate today) {
  std::mt19937 random(seed);
  const auto at = [&random](QDate day, int hourFrom, int hourTo) {
    std::uniform_int_distribution<int> hour(hourFrom, hourTo), minute(0, 59);
    return QDateTime(day, QTime(hour(random), minute(random), minute(random)), QTimeZone::utc());
  };
  Contents contents;
  contents.clips = {
      {at(QDate(2021, 11, 15), 0, 8), 0x002, 0x009,
       static_cast<uint32_t>(random())},  // before 2022
      {at(today.addDays(-6), 0, 8), 0x00A, 0x00F,
       static_cast<uint32_t>(random())},  // under a minute
      {at(today.addDays(-4), 0, 8), 0x010, 0x018, static_cast<uint32_t>(random())},
      {at(today.addDays(-2), 0, 8), 0x3E0, 0x410,
       static_cast<uint32_t>(random())},  // across the hole
      {at(today.addDays(-1), 0, 8), 0x7A0, 0x005,
       static_cast<uint32_t>(random())},  // wraps the ring
  };

  // Dives oldest first. The device clock runs on UTC: morning dives in Japan are
  // logged the evening before.
  contents.dives = {
      MakeDive(random, at(QDate(1999, 12, 31), 20, 23), 38, 10, 1650, 240, 210),
      MakeDive(random, at(today.addYears(-3), 0, 6), 41, 10, 2240, 265, 228),
      MakeDive(random, at(today.addDays(-200), 0, 6), 47, 10, 1830, 112, 78),
      MakeDive(random, at(today.addDays(-40), 0, 6), 35, 5, 1420, 30, -15),   // ice dive
      MakeDive(random, at(today.addDays(-9), 0, 6), 84, 10, 2710, 268, 231),  // full profile
      MakeDive(random, at(today.addDays(-3), 0, 6), 52, 10, 3150, 271, 239),
      MakeDive(random, at(today.addDays(-1), 0, 6), 45, 10, 1834, 270, 215),
  };
  contents.dives[0].unsetClock = true;
  Dive &deco = contents.dives[5];
  deco.warnings = 0x01 | 0x02;
  deco.information = 0x08;
  deco.profile[deco.profile.size() / 2].warnings = 0x20;
  deco.profile[deco.profile.size() * 3 / 4].warnings = 0x01;
  for (int i = 0; i < contents.dives.size(); ++i) contents.dives[i].dayCount = i + 1;
  contents.totalDives = 12;  // five older dives were overwritten
  contents.historyNumber = 3;
  return contents;
}

QByteArray ClipEntry(const Clip &clip) {
  return clip.start.toString(QStringLiteral("yyMMdd-HHmmss")).toLatin1() + '_' +
         QByteArray::number(clip.startBlock, 16).toUpper().rightJustified(3, '0') + '-' +
         QByteArray::number(clip.endBlock, 16).toUpper().rightJustified(3, '0');
}

QByteArray VoiceIndexReply(const Contents &contents) {
  QByteArray reply =
      QByteArray::number(static_cast<int>(contents.clips.size()), 16)
          .toUpper()
          .rightJustified(2, '0') +
      '(' + QByteArray::number(contents.ringFirst, 16).toUpper().rightJustified(3, '0') + '-' +
      QByteArray::number(contents.ringLast, 16).toUpper().rightJustified(3, '0') + "),";
  for (const Clip &clip : contents.clips) reply += ClipEntry(clip) + ',';
  return reply + "\r\n";
}

// The blocks a clip occupies, walking the ring from its first block and skipping the
// blocks of the hole, which hold no audio.
int ClipBytes(const Clip &clip, int ringFirst, int ringLast) {
  int blocks = 0;
  for (int block = clip.startBlock;; block = block == ringLast ? ringFirst : block + 1) {
    if (block < kHoleFirst || block > kHoleLast) ++blocks;
    if (block == clip.endBlock || blocks > ringLast) break;
  }
  return blocks * kBlockBytes;
}

// A tone sequence: a new note every half second, so a saved clip is easy to recognise.
QByteArray ClipAudio(const Clip &clip, int ringFirst, int ringLast) {
  const int bytes = ClipBytes(clip, ringFirst, ringLast);
  QByteArray audio(bytes, '\0');
  std::mt19937 random(clip.toneSeed);
  double frequency = 440, phase = 0;
  for (int i = 0; i < bytes / 2; ++i) {
    if (i % 4000 == 0) frequency = 262.0 * std::pow(2.0, (random() % 13) / 12.0);
    phase += 2 * M_PI * frequency / 8000.0;
    const auto sample = static_cast<int16_t>(9000 * std::sin(phase));
    qToLittleEndian(sample, audio.data() + 2 * i);
  }
  return audio;
}

QByteArray DivePage(const Dive &dive) {
  QByteArray page(kPageBytes, '\0');
  for (int k = 0; k < std::min<int>(dive.profile.size(), kMaxSamples); ++k) {
    const Sample &s = dive.profile[k];
    const int at = 8 * k;
    PutWord(page, at, s.depthCm);
    PutWord(page, at + 2, s.temperatureDeci & 0xFFFF);
    page[at + 4] = static_cast<char>(s.gasPressure);
    page[at + 5] = static_cast<char>(s.n2 << 4 | s.o2);
    page[at + 6] = static_cast<char>(s.oxygenPercent);
    page[at + 7] = static_cast<char>(s.warnings);
  }
  const QDateTime &in = dive.entry, &out = dive.exit;
  page[4032] = Bcd(in.time().minute());
  page[4033] = Bcd(in.time().hour());
  page[4034] = Bcd(out.time().minute());
  page[4035] = Bcd(out.time().hour());
  page[4036] = dive.unsetClock ? Bcd(31) : Bcd(in.date().day());
  page[4037] = dive.unsetClock ? Bcd(12) : Bcd(in.date().month());
  page[4038] = dive.unsetClock ? Bcd(99) : Bcd(in.date().year() % 100);
  page[4039] = static_cast<char>(dive.samplingSeconds);
  page[4040] = static_cast<char>(dive.dayCount);
  page[4041] = static_cast<char>(dive.cns);
  page[4042] = static_cast<char>(dive.warnings);
  page[4043] = static_cast<char>(dive.information);
  page[4044] = static_cast<char>(dive.safetyFactor);
  page[4045] = static_cast<char>(dive.entryPressureByte);
  page[4046] = static_cast<char>(dive.oxygenPercent);
  for (int i = 0; i < 16; ++i) page[4048 + i] = static_cast<char>(dive.bodyNitrogen[i]);
  PutWord(page, 4064, dive.diveMinutes);
  PutWord(page, 4066, dive.maxDepthCm);
  PutWord(page, 4068, dive.averageDepthCm);
  PutWord(page, 4070, dive.temperatureDeci & 0xFFFF);
  PutWord(page, 4072,
          dive.profileSizeWord.value_or(std::min<int>(dive.profile.size(), kMaxSamples)));
  PutWord(page, 4074, dive.otu);
  return page;
}

QByteArray ErasedPage() {
  return QByteArray(kPageBytes, '\xFF');
}

QByteArray HistoryRecord(const Contents &contents) {
  QByteArray record(32, '\0');
  PutWord(record, 0, contents.historyNumber);
  PutWord(record, 16, contents.heldCountWord.value_or(static_cast<int>(contents.dives.size())));
  qToLittleEndian(static_cast<uint32_t>(contents.totalDives), record.data() + 24);
  return record;
}

}  // namespace sim
