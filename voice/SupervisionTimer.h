#pragma once

#include <functional>
#include <memory>

// The 0.1 s supervision timer of a clip transfer. Tests replace it to tick by hand.
class SupervisionTimer {
 public:
  virtual ~SupervisionTimer() = default;
  // Starts ticking every 0.1 s on the main thread, replacing an earlier start.
  virtual void start(std::function<void()> tick) = 0;
  virtual void invalidate() = 0;
};

// A QTimer on the thread that creates it.
std::unique_ptr<SupervisionTimer> MakeQtSupervisionTimer();
