#include "FileSettler.h"

FileSettler::FileSettler(Library &library, int delayMs) : library_(library), delayMs_(delayMs) {
  worker_.setMaxThreadCount(1);
  timer_.setSingleShot(true);
  connect(&timer_, &QTimer::timeout, this, [this] { settleDue(); });
}

FileSettler::~FileSettler() {
  worker_.waitForDone();
}

void FileSettler::settleSoon(const QString &path) {
  waiting_.append({path, {}});
  waiting_.last().since.start();
  if (!timer_.isActive()) timer_.start(delayMs_);
}

void FileSettler::settleDue() {
  QStringList due;
  while (!waiting_.isEmpty() && waiting_.first().since.elapsed() >= delayMs_)
    due.append(waiting_.takeFirst().path);
  if (!waiting_.isEmpty())
    timer_.start(int(std::max<qint64>(0, delayMs_ - waiting_.first().since.elapsed())));
  if (due.isEmpty()) return;
  worker_.start([this, due] {
    QList<Library::SettledFile> settled;
    for (const QString &path : due)
      if (const auto file = Library::ReadSettled(path)) settled.append(*file);
    // Recorded on the main thread, where the library lives; only where the row still holds
    // the bytes that were read.
    QMetaObject::invokeMethod(
        this, [this, settled] { library_.rememberSettled(settled); }, Qt::QueuedConnection);
  });
}
