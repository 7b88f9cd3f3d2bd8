#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>

// The built window as its own process, offscreen, in this process's environment (so under
// a TemporaryHome it writes there). Its log lines are read as they come, so that the pipe
// never fills. Killed when the object goes.
class AppProcess {
 public:
  explicit AppProcess(const QString &program);
  ~AppProcess();
  // Waits until the window has loaded and its USB monitor is on the main loop.
  bool waitUntilReady(int timeoutMs = 10000);
  qint64 pid() const { return process_.processId(); }
  const QByteArray &log() const { return log_; }

 private:
  QProcess process_;
  QByteArray log_;
};
