#include "MainThreadQueue.h"

void MainThreadQueue::post(std::function<void()> work) {
  {
    std::lock_guard lock(mutex_);
    pending_.push_back(std::move(work));
  }
  QMetaObject::invokeMethod(this, "runPending", Qt::QueuedConnection);
}

void MainThreadQueue::runPending() {
  std::deque<std::function<void()>> batch;
  {
    std::lock_guard lock(mutex_);
    batch.swap(pending_);
  }
  for (const std::function<void()> &work : batch) work();
}
