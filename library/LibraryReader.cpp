#include "LibraryReader.h"

#include <optional>

#ifdef __linux__
#include <pthread.h>
#endif

LibraryReader::LibraryReader(QString path) : path_(std::move(path)) {
  thread_ = std::thread([this] { serve(); });
#ifdef __linux__
  pthread_setname_np(thread_.native_handle(), "libraryReader");
#endif
}

LibraryReader::~LibraryReader() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
    requests_.clear();
  }
  wake_.notify_one();
  thread_.join();
}

void LibraryReader::post(Request request) {
  {
    std::lock_guard lock(mutex_);
    requests_.push_back(std::move(request));
  }
  wake_.notify_one();
}

void LibraryReader::serve() {
  // Made, used and closed on this thread: a database connection belongs to one thread.
  std::optional<Library> library;
  for (;;) {
    Request request;
    {
      std::unique_lock lock(mutex_);
      wake_.wait(lock, [this] { return stopping_ || !requests_.empty(); });
      if (stopping_) return;
      request = std::move(requests_.front());
      requests_.pop_front();
    }
    if (!library) library.emplace(path_, Library::Access::Reader);
    request(*library);
  }
}
