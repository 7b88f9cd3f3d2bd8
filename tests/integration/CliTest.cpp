#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include "SimulatedDevice.h"
#include "TestSupport.h"

namespace {

ProgramRun RunCli(const QStringList &arguments) {
  return RunProcess(MRVTQ5DK_CLI_PATH, arguments);
}

sim::Contents Device() {
  return sim::GenerateContents(9, QDate::currentDate());
}

class CliTest : public ::testing::Test {
 protected:
  QStringList args(const QStringList &verb, const SimulatedDevice &device) {
    return verb + QStringList{"--port", device.slavePath(), "--output", output.path()};
  }
  QStringList files(const char *folder) const {
    return QDir(output.filePath(QString("Mrvtq5dk/") + folder)).entryList(QDir::Files, QDir::Name);
  }
  TemporaryHome home;  // the library too
  QTemporaryDir output;
};

TEST_F(CliTest, FailuresHaveTheirOwnStatus) {
  EXPECT_EQ(RunCli({"list"}).status, 3);  // no port
  EXPECT_EQ(RunCli({"list", "--port", "/dev/no-such-port"}).status, 3);
  // Wrong use is one line saying what was wrong, and status 2.
  for (const QStringList &wrong :
       {QStringList{"download-voice"}, QStringList{"lsit"}, QStringList{"list", "--frobnicate"},
        QStringList{"list", "--range", "2 weeks"}}) {
    const ProgramRun run = RunCli(wrong);
    EXPECT_EQ(run.status, 2) << qPrintable(wrong.join(' '));
    EXPECT_EQ(run.err.count('\n'), 1) << qPrintable(run.err);
    EXPECT_TRUE(run.err.contains("--help")) << qPrintable(run.err);
  }

  // A device that answers the voice index with garbage: the listing ends at the reply
  // deadline with one line, instead of waiting for hours.
  sim::Options garbage;
  garbage.garbageReplies = {"vi"};
  SimulatedDevice babbling(Device(), garbage);
  const ProgramRun babbled = RunCli(args({"list"}, babbling));
  EXPECT_EQ(babbled.status, 5) << qPrintable(babbled.err);
  EXPECT_EQ(babbled.err.trimmed().count('\n'), 0) << qPrintable(babbled.err);

  sim::Contents other = Device();
  other.model = "QM999XX";
  SimulatedDevice wrong(other);
  EXPECT_EQ(RunCli(args({"list"}, wrong)).status, 4);

  sim::Options stall;
  stall.stallAfterBytes = 10000;
  SimulatedDevice stalling(Device(), stall);
  const ProgramRun failed = RunCli(args({"download-voice", "1"}, stalling));
  EXPECT_EQ(failed.status, 5);
  EXPECT_TRUE(failed.err.contains("the transfer failed"));
  EXPECT_TRUE(files("voice").isEmpty());

  SimulatedDevice device(Device());
  QTemporaryDir blocked;
  WriteFile(blocked.filePath("Mrvtq5dk"), "a file where the folder belongs");
  EXPECT_EQ(RunCli({"list", "--port", device.slavePath(), "--output", blocked.path()}).status, 6);
}

}  // namespace
