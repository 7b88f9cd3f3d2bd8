#pragma once

#include <QObject>
#include <deque>
#include <functional>
#include <mutex>

// Runs work on the main thread's event loop, in the order posted. Made on the main thread;
// work still queued when it goes away is dropped with it. The work itself passes through a
// queue of ours under a mutex, so the hand-over between threads is plain to see for the
// thread sanitizer. Qt's event queue only carries the wake-up, and carries it as a call by
// name: nothing the posting thread built is read on the main thread before our mutex is
// taken (a functor's captures would be, out of the sanitizer's sight of Qt's own lock).
class MainThreadQueue : public QObject {
  Q_OBJECT

 public:
  void post(std::function<void()> work);

 private:
  Q_INVOKABLE void runPending();

  std::mutex mutex_;
  std::deque<std::function<void()>> pending_;
};
