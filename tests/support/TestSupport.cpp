#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>

TemporaryHome::TemporaryHome()
    : oldHome_(qgetenv("HOME")),
      oldConfig_(qgetenv("XDG_CONFIG_HOME")),
      oldData_(qgetenv("XDG_DATA_HOME")) {
  qputenv("HOME", dir_.path().toUtf8());
  qputenv("XDG_CONFIG_HOME", (dir_.path() + QStringLiteral("/.config")).toUtf8());
  qputenv("XDG_DATA_HOME", (dir_.path() + QStringLiteral("/.local/share")).toUtf8());
}

TemporaryHome::~TemporaryHome() {
  qputenv("HOME", oldHome_);
  qputenv("XDG_CONFIG_HOME", oldConfig_);
  qputenv("XDG_DATA_HOME", oldData_);
}

QByteArray ReadFile(const QString &path) {
  QFile file(path);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
  return file.readAll();
}

void WriteFile(const QString &path, const QByteArray &bytes) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << qPrintable(path);
  ASSERT_EQ(file.write(bytes), bytes.size());
}

std::optional<QVariant> OtherProgramSql(const QString &path, const QStringList &statements) {
  std::optional<QVariant> answer;
  {
    QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "another program");
    db.setDatabaseName(path);
    QSqlQuery query(db);
    if (db.open()) answer = QVariant();
    for (const QString &statement : statements) {
      if (!answer || !query.exec(statement)) {
        ADD_FAILURE() << qPrintable(statement + ": " + query.lastError().text());
        answer.reset();
        break;
      }
      answer = query.next() ? query.value(0) : QVariant();
    }
  }
  QSqlDatabase::removeDatabase("another program");
  return answer;
}

#include <sys/resource.h>

#include <csignal>

FileSizeLimit::FileSizeLimit(long long bytes) {
  // Past the limit the kernel also raises SIGXFSZ; ignored, the write fails with EFBIG.
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  oldSoft_ = static_cast<long long>(limit.rlim_cur);
  limit.rlim_cur = static_cast<rlim_t>(bytes);
  EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
}

FileSizeLimit::~FileSizeLimit() {
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = static_cast<rlim_t>(oldSoft_);
  setrlimit(RLIMIT_FSIZE, &limit);
}

ProgramRun RunProcess(const QString &program, const QStringList &arguments,
                      const QMap<QString, QString> &extra) {
  QProcess process;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  for (auto variable = extra.begin(); variable != extra.end(); ++variable)
    environment.insert(variable.key(), variable.value());
  process.setProcessEnvironment(environment);
  process.start(program, arguments);
  EXPECT_TRUE(process.waitForFinished(120000)) << qPrintable(program);
  return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
          QString::fromUtf8(process.readAllStandardError())};
}

ProgramRun RunChild(const QString &test, const QString &home) {
  return RunProcess(
      QCoreApplication::applicationFilePath(), {"--gtest_filter=" + test},
      {{"MRVTQ5DK_CHILD", "1"}, {"HOME", home}, {"XDG_CONFIG_HOME", home + "/.config"}});
}

bool WaitFor(const std::function<bool()> &condition, int timeoutMs) {
  QElapsedTimer clock;
  clock.start();
  while (!condition()) {
    if (clock.elapsed() > timeoutMs) return false;
    QCoreApplication::processEvents();
    QThread::msleep(2);
  }
  return true;
}
