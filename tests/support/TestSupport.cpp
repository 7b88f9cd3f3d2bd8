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

TemporaryHome::TemporaryHome() {
  for (const auto &[name, below] : {std::pair{"HOME", ""},
                                    {"XDG_CONFIG_HOME", "/.config"},
                                    {"XDG_DATA_HOME", "/.local/share"}}) {
    saved_.append({name, qgetenv(name)});
    qputenv(name, (dir_.path() + below).toUtf8());
  }
}

TemporaryHome::~TemporaryHome() {
  for (const auto &[name, value] : saved_) qputenv(name, value);
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
