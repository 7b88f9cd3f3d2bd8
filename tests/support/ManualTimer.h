#pragma once

#include "SupervisionTimer.h"

// The supervision timer ticked by hand: tick() runs what it was started with, while it runs.
class ManualTimer : public SupervisionTimer {
 public:
  void start(std::function<void()> tick) override {
    running = true;
    tick_ = std::move(tick);
  }
  void invalidate() override { running = false; }
  void tick() {
    if (running) tick_();
  }
  bool running = false;

 private:
  std::function<void()> tick_;
};
