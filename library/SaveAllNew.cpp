#include "SaveAllNew.h"

#include <QTimer>

SaveAllNew::SaveAllNew(Session &session, DeviceLibrary &library)
    : session_(session), library_(library) {}

void SaveAllNew::start(std::function<void(const SaveAllReport &)> done) {
  begin(std::move(done));
  for (const DeviceLibrary::Item &item : library_.listed()) {
    if (item.savedPath) {
      ++report_.alreadySaved;
    } else if (item.damaged) {
      ++report_.damaged;
    } else {
      enqueue(item);
    }
  }
  QTimer::singleShot(0, &anchor_, [this] { next(); });
}

void SaveAllNew::start(const QList<DeviceLibrary::Item> &items,
                       std::function<void(const SaveAllReport &)> done) {
  begin(std::move(done));
  for (const DeviceLibrary::Item &item : items) enqueue(item);
  QTimer::singleShot(0, &anchor_, [this] { next(); });
}

void SaveAllNew::begin(std::function<void(const SaveAllReport &)> done) {
  done_ = std::move(done);
  report_ = SaveAllReport{};
  progress_ = SaveAllProgress{};
  queue_.clear();
  queueBytes_.clear();
  running_ = true;
  cancelling_ = false;
  clock_.start();
}

void SaveAllNew::enqueue(const DeviceLibrary::Item &item) {
  queue_.append(item);
  queueBytes_.append(library_.wireBytes(item));
  progress_.bytesTotal += queueBytes_.last();
  ++progress_.total;
}

void SaveAllNew::cancel() {
  if (!running_ || cancelling_) return;
  cancelling_ = true;
  report_.cancelled = true;
  if (progress_.current) session_.cancel();
}

SaveAllProgress SaveAllNew::progress() const {
  SaveAllProgress now = progress_;
  if (now.current && wireItemBytes_ > 0) {
    const SessionState &state = session_.state();
    now.bytesDone += std::min<qint64>(
        wireItemBytes_, std::max(state.clipReceived.load(), state.pageReceived.load()));
  }
  if (now.bytesDone > 0 && clock_.isValid()) {
    now.msLeft = clock_.elapsed() * (now.bytesTotal - now.bytesDone) / now.bytesDone;
  }
  return now;
}

void SaveAllNew::next() {
  if (cancelling_ || queue_.isEmpty()) {
    finish();
    return;
  }
  const DeviceLibrary::Item item = queue_.takeFirst();
  wireItemBytes_ = queueBytes_.takeFirst();
  progress_.current = item;
  library_.save(item, [this, item](const Outcome &outcome) { ended(item, outcome); });
}

void SaveAllNew::ended(const DeviceLibrary::Item &item, const Outcome &outcome) {
  progress_.bytesDone += wireItemBytes_;
  wireItemBytes_ = 0;
  progress_.current.reset();
  ++progress_.done;
  if (outcome.ok()) {
    report_.saved.append(outcome.path);
  } else if (outcome.failure != Failure::Cancelled) {
    report_.failed.append(SaveAllReport::Failed{item, outcome});
  }
  if (itemHandler_) itemHandler_(item, outcome);
  // The next item starts from the event loop, after this one's handlers have all run.
  QTimer::singleShot(0, &anchor_, [this] { next(); });
}

void SaveAllNew::finish() {
  running_ = false;
  progress_.current.reset();
  if (done_) done_(report_);
}
