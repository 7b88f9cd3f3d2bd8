#pragma once

#include "LinkSupervision.h"

// The supervision timer ticked by hand: it only remembers whether it was started.
class ManualTimer : public SupervisionTimer {
 public:
  void start(std::function<void()>) override { running = true; }
  void invalidate() override { running = false; }
  bool running = false;
};
