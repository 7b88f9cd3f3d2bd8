#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>
#include <functional>
#include <optional>

// A fresh temporary folder that stands in for the user's home: HOME and the XDG folders
// point into it, so the Downloads folder is <home>/Downloads.
class TemporaryHome {
 public:
  TemporaryHome();
  ~TemporaryHome();
  QString path() const { return dir_.path(); }
  QString downloads() const { return dir_.path() + QStringLiteral("/Downloads"); }

 private:
  QTemporaryDir dir_;
  QList<std::pair<const char *, QByteArray>> saved_;  // each variable as it was
};

// Waits (processing Qt events) until the condition holds or the timeout passes.
bool WaitFor(const std::function<bool()> &condition, int timeoutMs = 5000);

QByteArray ReadFile(const QString &path);
void WriteFile(const QString &path, const QByteArray &bytes);
// Runs SQL statements on the SQLite database at path, as another program would: the first
// value the last one answers (invalid when it answers no row), or none, with the failing
// statement printed, at the first that fails.
std::optional<QVariant> OtherProgramSql(const QString &path, const QStringList &statements);

// How a program run ended: its exit status and what it printed.
struct ProgramRun {
  int status = -1;
  QString out, err;
};
// Runs a program to its end (two minutes at most), in this environment plus extra.
ProgramRun RunProcess(const QString &program, const QStringList &arguments,
                      const QMap<QString, QString> &extra = {});

// While alive, no file of this process may grow past the given size: writes beyond it
// fail as on a full disk.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(long long bytes);
  ~FileSizeLimit();

 private:
  long long oldSoft_;
};
