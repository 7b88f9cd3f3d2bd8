#include "MainThreadHandOff.h"

#include <QCoreApplication>
#include <QThread>

MainThreadHandOff::MainThreadHandOff() {
  if (QCoreApplication *app = QCoreApplication::instance()) mainThread_.moveToThread(app->thread());
}

bool MainThreadHandOff::onMainThread() const {
  return QThread::currentThread() == mainThread_.thread();
}

void MainThreadHandOff::run(std::function<void()> work) {
  if (onMainThread()) {
    work();
    return;
  }
  Handed handed{std::move(work)};
  std::unique_lock lock(mutex_);
  handed_.push_back(&handed);
  // Qt's event queue carries only the wake-up; the work goes through our own queue, so a
  // main thread that is waiting in waitUntil finds it as well.
  QMetaObject::invokeMethod(
      &mainThread_,
      [this] {
        std::unique_lock lock(mutex_);
        runHanded(lock);
      },
      Qt::QueuedConnection);
  changed_.notify_all();
  changed_.wait(lock, [&handed] { return handed.done; });
}

void MainThreadHandOff::runHanded(std::unique_lock<std::mutex> &lock) {
  while (!handed_.empty()) {
    Handed *handed = handed_.front();
    handed_.pop_front();
    lock.unlock();
    handed->work();
    lock.lock();
    handed->done = true;
    changed_.notify_all();
  }
}

void MainThreadHandOff::waitUntil(const std::function<bool()> &done) {
  const bool mainThread = onMainThread();
  std::unique_lock lock(mutex_);
  for (;;) {
    if (mainThread) runHanded(lock);
    if (done()) return;
    changed_.wait(lock, [&] { return (mainThread && !handed_.empty()) || done(); });
  }
}

void MainThreadHandOff::wake() {
  // Taking the lock orders the change that the waiter looks for before its next look.
  { std::lock_guard lock(mutex_); }
  changed_.notify_all();
}
