#include "DiveProfile.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "DiveSummary.h"

namespace {

constexpr double kLeastMinutes = 30;
constexpr double kLeastMetres = 30;
constexpr double kLeastCelsiusSpan = 2;
constexpr double kCelsiusRoom = 0.1;
constexpr int kMostTickSteps = 7;  // eight ticks
// The ascent rate is taken over about half a minute, so that the centimetre jitter of the
// depth sensor between two close samples does not colour the line.
constexpr double kRateWindowSeconds = 30;

const QList<double> kMinuteSteps = {5, 10, 15, 20, 30, 60, 120, 180, 240, 360, 720};
const QList<double> kMetreSteps = {5, 10, 20, 50, 100};
const QList<double> kCelsiusSteps = {0.5, 1, 2, 5, 10, 20, 50};

double Fraction(const ProfileAxis &axis, double value) {
  return (value - axis.low) / (axis.high - axis.low);
}

// Whole steps from the step at or below low to the one at or above high; the small
// allowance keeps 30 / 5 from counting as a little over six.
int StepsSpanned(double low, double high, double step) {
  constexpr double kAllowance = 1e-9;
  return static_cast<int>(std::ceil(high / step - kAllowance) -
                          std::floor(low / step + kAllowance));
}

// Samples on each side of a segment that its ascent rate also takes in.
int RateReach(int32_t samplingSeconds) {
  if (samplingSeconds <= 0) return 0;
  return std::max(0, static_cast<int>(std::lround((kRateWindowSeconds / samplingSeconds - 1) / 2)));
}

// Metres a minute upwards from sample k to sample k + 1, over the rate window around them.
double AscentRate(const QList<DiveSample> &samples, int k, int reach) {
  const int from = std::max(0, k - reach);
  const int to = std::min(static_cast<int>(samples.size()) - 1, k + 1 + reach);
  const int32_t seconds = samples[to].seconds - samples[from].seconds;
  if (seconds <= 0) return 0;
  return (samples[from].depthMetres() - samples[to].depthMetres()) * 60.0 / seconds;
}

}  // namespace

QList<double> ProfileAxis::ticks() const {
  QList<double> ticks;
  const auto count = std::lround((high - low) / step);
  for (long i = 0; i <= count; ++i) ticks << low + static_cast<double>(i) * step;
  return ticks;
}

ProfileAxis NiceAxis(double low, double high, const QList<double> &steps) {
  if (!(high > low)) high = low + steps.first();
  double step = steps.last();
  for (double candidate : steps) {
    if (StepsSpanned(low, high, candidate) <= kMostTickSteps) {
      step = candidate;
      break;
    }
  }
  while (StepsSpanned(low, high, step) > kMostTickSteps) step *= 10;
  constexpr double kAllowance = 1e-9;
  return {std::floor(low / step + kAllowance) * step, std::ceil(high / step - kAllowance) * step,
          step};
}

AscentBand AscentBandFor(double ascentMetresPerMinute) {
  if (ascentMetresPerMinute > 18) return AscentBand::Red;
  if (ascentMetresPerMinute > 9) return AscentBand::Orange;
  if (ascentMetresPerMinute > 4) return AscentBand::Yellow;
  return AscentBand::Green;
}

double ProfileGeometry::xAtSeconds(double seconds) const {
  return plot.left() + Fraction(minutes, seconds / 60.0) * plot.width();
}

double ProfileGeometry::yAtMetres(double value) const {
  return plot.top() + Fraction(metres, value) * plot.height();
}

double ProfileGeometry::yAtCelsius(double value) const {
  return plot.bottom() - Fraction(celsius, value) * plot.height();
}

ProfileGeometry LayOutProfile(const DiveRecord &dive, const QRectF &plot) {
  ProfileGeometry g;
  g.plot = plot;
  const QList<DiveSample> &samples = dive.samples;

  double seconds = dive.diveTimeSeconds(), deepest = 0;
  if (dive.entry.isValid() && dive.exit.isValid()) {
    seconds = std::max<double>(seconds, dive.entry.secsTo(dive.exit));
  }
  double coldest = std::numeric_limits<double>::max();
  double warmest = std::numeric_limits<double>::lowest();
  for (const DiveSample &s : samples) {
    seconds = std::max<double>(seconds, s.seconds);
    deepest = std::max(deepest, s.depthMetres());
    coldest = std::min<double>(coldest, s.temperatureCelsius());
    warmest = std::max<double>(warmest, s.temperatureCelsius());
  }
  if (samples.isEmpty()) coldest = warmest = dive.temperatureCelsius();
  if (warmest - coldest < kLeastCelsiusSpan) {
    const double middle = (warmest + coldest) / 2;
    coldest = middle - kLeastCelsiusSpan / 2;
    warmest = middle + kLeastCelsiusSpan / 2;
  }
  // A little room above and below, so that the line does not run along the frame.
  const double room = (warmest - coldest) * kCelsiusRoom;
  coldest -= room;
  warmest += room;
  g.minutes = NiceAxis(0, std::max(kLeastMinutes, seconds / 60.0), kMinuteSteps);
  g.metres = NiceAxis(0, std::max(kLeastMetres, deepest), kMetreSteps);
  g.celsius = NiceAxis(coldest, warmest, kCelsiusSteps);

  for (const DiveSample &s : samples) {
    const double x = g.xAtSeconds(s.seconds);
    g.depthLine << QPointF(x, g.yAtMetres(s.depthMetres()));
    g.temperatureLine << QPointF(x, g.yAtCelsius(s.temperatureCelsius()));
  }

  const int reach = RateReach(dive.samplingInterval);
  if (samples.size() == 1) g.runs << DepthRun{AscentBand::Green, {g.depthLine.first()}};
  for (int k = 0; k + 1 < samples.size(); ++k) {
    const AscentBand band = AscentBandFor(AscentRate(samples, k, reach));
    if (g.runs.isEmpty() || g.runs.last().band != band) {
      g.runs << DepthRun{band, {g.depthLine[k]}};
    }
    g.runs.last().points << g.depthLine[k + 1];
  }

  for (int k = 0; k < samples.size(); ++k) {
    const int32_t flags = samples[k].warningFlags;
    if (flags != 0) g.markers << WarningMarker{k, g.depthLine[k], flags, SampleWarningWords(flags)};
  }
  return g;
}

QList<ClipMark> PlaceClips(const DiveRecord &dive, const ProfileGeometry &geometry,
                           const QList<QDateTime> &clipTimes) {
  QList<ClipMark> marks;
  for (int i = 0; i < clipTimes.size(); ++i) {
    if (const auto seconds = SecondsIntoDive(dive, clipTimes[i])) {
      marks << ClipMark{i, geometry.xAtSeconds(static_cast<double>(*seconds))};
    }
  }
  return marks;
}

std::optional<ProfileReadout> ReadProfileAt(const DiveRecord &dive, const ProfileGeometry &geometry,
                                            double x) {
  const QList<QPointF> &line = geometry.depthLine;
  if (line.isEmpty() || line.size() != dive.samples.size()) return std::nullopt;
  const auto after = std::lower_bound(line.begin(), line.end(), x,
                                      [](const QPointF &p, double at) { return p.x() < at; });
  auto nearest = after == line.end() ? after - 1 : after;
  if (after != line.begin() && x - (after - 1)->x() <= nearest->x() - x) nearest = after - 1;
  const int k = static_cast<int>(nearest - line.begin());
  const DiveSample &s = dive.samples[k];
  return ProfileReadout{k, s.seconds, s.depthMetres(), s.temperatureCelsius(), *nearest};
}
