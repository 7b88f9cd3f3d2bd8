#pragma once

#include <QObject>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

// Hands work from other threads to the main thread and lets them wait until it has run
// there, one piece after another. The main thread runs it from its event loop, or while it
// waits in waitUntil: a main thread that waits for the very threads handing work over
// does that work itself instead of waiting for ever.
class MainThreadHandOff {
 public:
  MainThreadHandOff();
  MainThreadHandOff(const MainThreadHandOff &) = delete;
  MainThreadHandOff &operator=(const MainThreadHandOff &) = delete;

  // Runs work on the main thread and returns once it has run; on the main thread, at once.
  void run(std::function<void()> work);
  // Returns once done() holds, looking again at every wake(). On the main thread it runs
  // the work handed over meanwhile. done() is called with the hand-off's lock held.
  void waitUntil(const std::function<bool()> &done);
  // Makes waitUntil look at its condition again.
  void wake();

 private:
  struct Handed {
    std::function<void()> work;
    bool done = false;
  };
  bool onMainThread() const;
  void runHanded(std::unique_lock<std::mutex> &lock);  // on the main thread

  QObject mainThread_;  // lives on the main thread; carries the wake-ups of its event loop
  std::mutex mutex_;    // guards what follows
  std::condition_variable changed_;
  std::deque<Handed *> handed_;
};
