#include "StallProbe.h"

#include <algorithm>

StallProbe::StallProbe() {
  // A coarse timer may fire up to 5% early or late by design; this one is meant to be exact.
  timer_.setTimerType(Qt::PreciseTimer);
  timer_.setInterval(kPeriodMs);
  QObject::connect(&timer_, &QTimer::timeout, [this] { tick(); });
  clock_.start();
  timer_.start();
}

void StallProbe::restart() {
  lateness_.clear();
  lastNs_ = clock_.nsecsElapsed();
}

void StallProbe::tick() {
  const qint64 now = clock_.nsecsElapsed();
  lateness_.append(std::max(0.0, double(now - lastNs_) / 1e6 - kPeriodMs));
  lastNs_ = now;
}

double StallProbe::longestStallMs() const {
  return lateness_.isEmpty() ? 0 : *std::max_element(lateness_.begin(), lateness_.end());
}

double StallProbe::lateness99Ms() const {
  if (lateness_.isEmpty()) return 0;
  QVector<double> sorted = lateness_;
  std::sort(sorted.begin(), sorted.end());
  return sorted[std::min<qsizetype>(sorted.size() - 1, qsizetype(0.99 * double(sorted.size())))];
}
