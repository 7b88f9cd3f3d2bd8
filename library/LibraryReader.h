#pragma once

#include <QObject>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "Library.h"

// Reads the library on a thread of its own, so that reading years of dives never holds up
// the thread that asked. The reading thread shares the library through a connection of its
// own, opened as a reader on the first request. Requests are read one at a time in the order
// asked; each answer is handed to its receiver on the receiver's thread. A receiver outlives
// the reader (it owns it): answers still queued for it when it goes are dropped with it.
class LibraryReader {
 public:
  // path: a library its owner has opened.
  explicit LibraryReader(QString path);
  ~LibraryReader();  // finishes the request under way; the others are dropped
  LibraryReader(const LibraryReader &) = delete;
  LibraryReader &operator=(const LibraryReader &) = delete;

  // Runs read with the library on the reading thread, then done with its answer on the
  // receiver's thread.
  template <typename Answer>
  void read(QObject *receiver, std::function<Answer(const Library &)> read,
            std::function<void(const Answer &)> done) {
    post([receiver, read = std::move(read), done = std::move(done)](const Library &library) {
      QMetaObject::invokeMethod(
          receiver, [done, answer = read(library)] { done(answer); }, Qt::QueuedConnection);
    });
  }

 private:
  using Request = std::function<void(const Library &)>;
  void post(Request request);
  void serve();

  const QString path_;
  std::mutex mutex_;  // guards requests_ and stopping_
  std::condition_variable wake_;
  std::deque<Request> requests_;
  bool stopping_ = false;
  std::thread thread_;
};
