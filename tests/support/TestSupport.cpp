#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>

TemporaryHome::TemporaryHome() : oldHome_(qgetenv("HOME")), oldConfig_(qgetenv("XDG_CONFIG_HOME")) {
  qputenv("HOME", dir_.path().toUtf8());
  qputenv("XDG_CONFIG_HOME", (dir_.path() + QStringLiteral("/.config")).toUtf8());
}

TemporaryHome::~TemporaryHome() {
  qputenv("HOME", oldHome_);
  qputenv("XDG_CONFIG_HOME", oldConfig_);
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

QString RunProgram(const QString &program, const QStringList &arguments) {
  QProcess process;
  process.start(program, arguments);
  if (!process.waitForFinished(60000)) {
    ADD_FAILURE() << "could not run " << qPrintable(program);
    return {};
  }
  EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
  return QString::fromUtf8(process.readAllStandardOutput());
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

ChildRun RunChild(const QString &test, const QString &home) {
  QProcess child;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert("MRVTQ5DK_CHILD", "1");
  environment.insert("HOME", home);
  environment.insert("XDG_CONFIG_HOME", home + "/.config");
  child.setProcessEnvironment(environment);
  child.start(QCoreApplication::applicationFilePath(), {"--gtest_filter=" + test});
  EXPECT_TRUE(child.waitForFinished(30000));
  return {child.exitCode(), child.readAllStandardOutput(), child.readAllStandardError()};
}
