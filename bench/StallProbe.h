#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QVector>

// A 5 ms timer on the event loop it lives on: each tick notes how late it runs. A tick can
// only run when the thread is back in its event loop, so the gap between two ticks is how
// long the thread was busy with something else.
class StallProbe {
 public:
  StallProbe();
  // Forgets what was seen so far and starts a new count from now.
  void restart();
  // The longest gap between two ticks (or since restart) less the period, in milliseconds.
  double longestStallMs() const;
  // The 99th percentile of every tick's lateness, in milliseconds.
  double lateness99Ms() const;
  int ticks() const { return int(lateness_.size()); }

  static constexpr int kPeriodMs = 5;

 private:
  void tick();

  QTimer timer_;
  QElapsedTimer clock_;
  qint64 lastNs_ = 0;
  QVector<double> lateness_;
};
