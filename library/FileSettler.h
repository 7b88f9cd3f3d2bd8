#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QThreadPool>
#include <QTimer>

#include "Library.h"

// Files just saved are read once more on a worker thread once their modification time has
// settled, and that time is recorded, so that the window never reads a whole file it saved
// itself to tell that it is unchanged. Main thread; the reading is handed to a thread of its
// own and its findings come back to the main thread.
class FileSettler : public QObject {
 public:
  // delayMs: how long after a save its file is looked at; past the settling time.
  explicit FileSettler(Library &library, int delayMs = Library::kSettledMs + 500);
  ~FileSettler() override;  // waits for a reading under way; its findings are dropped

  // The file at path was just recorded as saved.
  void settleSoon(const QString &path);

 private:
  struct Waiting {
    QString path;
    QElapsedTimer since;
  };
  void settleDue();

  Library &library_;
  const int delayMs_;
  QList<Waiting> waiting_;
  QTimer timer_;
  QThreadPool worker_;
};
