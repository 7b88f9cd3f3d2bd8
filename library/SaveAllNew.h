#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QString>
#include <functional>
#include <optional>

#include "DeviceLibrary.h"

// Where a "save all new" job stands, for a progress bar.
struct SaveAllProgress {
  int done = 0;                                // items ended, saved or not
  int total = 0;                               // items the job set out to save
  std::optional<DeviceLibrary::Item> current;  // the item under way; none between items
  qint64 bytesDone = 0;                        // on the wire, the item under way included
  qint64 bytesTotal = 0;
  qint64 msLeft = -1;  // -1 until a rate is known
};

// How a job ended: what was saved, and what was not and why.
struct SaveAllReport {
  struct Failed {
    DeviceLibrary::Item item;
    Outcome outcome;
  };
  QStringList saved;       // the paths written
  QList<Failed> failed;    // in the order tried
  int alreadySaved = 0;    // listed items the library already had, unchanged
  int damaged = 0;         // listed dive pages left unsaved: no device could have recorded them
  bool cancelled = false;  // the items not tried are not in failed
};

// Saves every listed item the library does not have yet, damaged dive pages aside: dives first,
// from the pages the listing read, then clips one after another through the session's clip download
// with its stall supervision and retries. A failed item does not stop the rest; cancel stops after
// the item under way, which ends as cancelled. Main thread.
class SaveAllNew {
 public:
  SaveAllNew(Session &session, DeviceLibrary &library);

  // Hears each item as it ends, saved or not.
  void setItemHandler(std::function<void(const DeviceLibrary::Item &, const Outcome &)> handler) {
    itemHandler_ = std::move(handler);
  }
  // Starts the job over the current lists' new items, damaged pages left out and counted;
  // done hears how it ended.
  void start(std::function<void(const SaveAllReport &)> done);
  // Saves these items, saved before or not: the rows a diver picked.
  void start(const QList<DeviceLibrary::Item> &items,
             std::function<void(const SaveAllReport &)> done);
  void cancel();
  bool running() const { return running_; }
  SaveAllProgress progress() const;

 private:
  void begin(std::function<void(const SaveAllReport &)> done);
  void enqueue(const DeviceLibrary::Item &item);
  void next();
  void ended(const DeviceLibrary::Item &item, const Outcome &outcome);
  void finish();

  Session &session_;
  DeviceLibrary &library_;
  QList<DeviceLibrary::Item> queue_;
  QList<qint64> queueBytes_;
  std::function<void(const SaveAllReport &)> done_;
  std::function<void(const DeviceLibrary::Item &, const Outcome &)> itemHandler_;
  QObject anchor_;  // the next item starts from the event loop while the job lives
  SaveAllReport report_;
  SaveAllProgress progress_;
  QElapsedTimer clock_;
  qint64 wireItemBytes_ = 0;  // of the item under way
  bool running_ = false;
  bool cancelling_ = false;
};
