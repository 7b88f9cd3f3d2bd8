#pragma once

// Wakes a thread that waits in poll on a descriptor: it polls readEnd() beside that
// descriptor, and wake() makes the read end ready. Neither end blocks, and neither is
// inherited by programs started later.
class WakePipe {
 public:
  WakePipe();
  ~WakePipe();
  WakePipe(const WakePipe &) = delete;
  WakePipe &operator=(const WakePipe &) = delete;

  int readEnd() const { return ends_[0]; }
  void wake();
  // Takes back every wake-up not yet seen.
  void drain();

 private:
  int ends_[2] = {-1, -1};
};
