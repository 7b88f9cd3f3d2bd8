#pragma once

#include <QObject>
#include <QSqlDatabase>
#include <mutex>

// Guards quitting: while a clip is downloading from a connected device the application
// neither quits nor closes its last window. Also keeps the persistence store "Mrvtq5dk",
// opened on first use and saved at quit time, though nothing is stored in it.
class AppDelegate : public QObject {
 public:
  enum class TerminateReply { Now, Cancel };

  void launched() { clipUnderWay = false; }
  bool quitsWithLastWindow() const { return !clipUnderWay; }
  bool mayClose() const { return !clipUnderWay; }
  TerminateReply confirmQuit();

  // The store, opened on first use; a store that cannot be opened ends the process.
  QSqlDatabase persistentContainer();
  // Commits pending changes, if any.
  void save();

  bool clipUnderWay = false;

 private:
  std::recursive_mutex containerMutex_;
  bool containerOpen_ = false;
};
