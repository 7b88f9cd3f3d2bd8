#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QThread>
#include <atomic>
#include <thread>

#include "FileSettler.h"
#include "Library.h"
#include "Localization.h"
#include "SystemLog.h"
#include "TestSupport.h"

namespace {

const DeviceKey kDevice{"QM482", "28417305"};
const DeviceKey kOther{"QM482", "28417399"};

QDateTime Utc(int day, int hour) {
  return QDateTime(QDate(2024, 3, day), QTime(hour, 0), Qt::UTC);
}

// A page with every byte value in it, zeros included, marked with the dive's number.
QByteArray Page(int number) {
  QByteArray page(4096, '\0');
  for (int i = 0; i < page.size(); ++i) page[i] = char((i * 7 + number) & 0xFF);
  return page;
}

// Each test's library in a folder of its own.
class LibraryTest : public ::testing::Test {
 protected:
  QTemporaryDir dir;
  const QString path = dir.filePath("library.sqlite");
};

TEST_F(LibraryTest, KeepsWhatWasReadAcrossReopeningNewestFirst) {
  {
    Library library(path);
    ASSERT_TRUE(library.recordDive(kDevice, {7, Utc(2, 9), Page(0)}));  // replaced below
    ASSERT_TRUE(library.recordDive(kDevice, {12, Utc(5, 8), Page(12)}));
    ASSERT_TRUE(library.recordDive(kDevice, {7, Utc(3, 10), Page(7)}));
    ASSERT_TRUE(library.recordDive(kOther, {1, Utc(1, 1), Page(1)}));
    ASSERT_TRUE(library.recordClip(kDevice, {"early", "240301-100000_002-00F", Utc(1, 10)}));
    ASSERT_TRUE(library.recordClip(kDevice, {"late", "240304-110000_010-01A", Utc(4, 11)}));
    ASSERT_TRUE(library.recordClip(kDevice, {"early", "240301-100000_002-010", Utc(1, 10)}));
  }
  Library library(path);
  EXPECT_EQ(library.devices(), (QList<DeviceKey>{kDevice, kOther}));
  const QList<StoredDive> dives = library.dives(kDevice);
  ASSERT_EQ(dives.size(), 2);
  EXPECT_EQ(dives[0].page, Page(12));
  EXPECT_EQ(dives[1].page, Page(7));
  EXPECT_EQ(dives[1].startUtc, Utc(3, 10));
  const QList<StoredClip> clips = library.clips(kDevice);
  ASSERT_EQ(clips.size(), 2);
  EXPECT_EQ(clips[0].key, "late");
  EXPECT_EQ(clips[1].entry, "240301-100000_002-010");
}

TEST_F(LibraryTest, FileCountsAsSavedOnlyWhileUnchangedAndHoldsOneItem) {
  Library library(path);
  const QString wav = dir.filePath("clip.wav");
  WriteFile(wav, "RIFF----WAVEfmt one");
  // Recorded through a roundabout path, found by the plain one.
  ASSERT_TRUE(library.recordSaved(kDevice, ItemKind::Clip, "20240301100000",
                                  dir.path() + "/./sub/../clip.wav"));
  EXPECT_EQ(library.savedFile(kDevice, ItemKind::Clip, "20240301100000"), wav);
  EXPECT_FALSE(library.savedFile(kDevice, ItemKind::Dive, "20240301100000"));
  EXPECT_EQ(library.itemAt(wav).value_or(Library::ItemRef{}).itemKey, "20240301100000");

  WriteFile(wav, "RIFF----WAVEfmt two");  // same size, other bytes
  EXPECT_FALSE(library.savedFile(kDevice, ItemKind::Clip, "20240301100000"));
  EXPECT_FALSE(library.itemAt(wav));

  // The same path recorded for another item is that item's now.
  ASSERT_TRUE(library.recordSaved(kOther, ItemKind::Dive, "12", wav));
  EXPECT_EQ(library.savedFile(kOther, ItemKind::Dive, "12"), wav);
  EXPECT_EQ(library.itemAt(wav).value_or(Library::ItemRef{}).kind, ItemKind::Dive);
  ASSERT_TRUE(library.recordSaved(kDevice, ItemKind::Clip, "20240301100000", wav));
  EXPECT_FALSE(library.savedFile(kOther, ItemKind::Dive, "12"));

  ASSERT_TRUE(QFile::remove(wav));
  EXPECT_FALSE(library.savedFile(kDevice, ItemKind::Clip, "20240301100000"));
  EXPECT_FALSE(library.recordSaved(kDevice, ItemKind::Clip, "20240301100000", wav));
}

// A file is read for its hash until its time has settled, then told by its size and time; a
// library from the version before, without the times, gains them.
TEST_F(LibraryTest, AFileIsReadUntilItsTimeSettlesThenToldByItsSizeAndTime) {
  const QString wav = dir.filePath("clip.wav");
  const auto saved = [&wav](Library &library) {
    return library.savedFile(kDevice, ItemKind::Clip, "k") == wav;
  };
  const auto rewrite = [&wav](const QByteArray &bytes, const QDateTime &time) {
    WriteFile(wav, bytes);
    QFile file(wav);
    return file.open(QIODevice::ReadWrite) &&
           file.setFileTime(time, QFileDevice::FileModificationTime);
  };
  WriteFile(wav, "RIFF one");
  const QDateTime fresh = QFileInfo(wav).lastModified();
  {
    Library library(path);
    ASSERT_TRUE(library.recordSaved(kDevice, ItemKind::Clip, "k", wav));
    EXPECT_TRUE(saved(library));
    // Other bytes within the same tick of the file system's clock: the time proves nothing.
    ASSERT_TRUE(rewrite("RIFF two", fresh));
    EXPECT_FALSE(saved(library));
    ASSERT_TRUE(rewrite("RIFF one", fresh));
    EXPECT_TRUE(saved(library));
  }
  ASSERT_TRUE(OtherProgramSql(path, {"ALTER TABLE files DROP COLUMN modified"}));
  Library library(path);
  const QDateTime settled = QDateTime::currentDateTime().addSecs(-60);
  ASSERT_TRUE(rewrite("RIFF one", settled));
  EXPECT_TRUE(saved(library));  // read once more, and its time recorded
  ASSERT_TRUE(rewrite("RIFF two", settled));
  EXPECT_TRUE(saved(library));  // other bytes that kept size and time are not read
  ASSERT_TRUE(rewrite("RIFF", settled));
  EXPECT_FALSE(saved(library));
  WriteFile(wav, "RIFF 333");  // a plain write moves the time on
  EXPECT_FALSE(saved(library));
}

// Files just saved are read again on a worker once their time has settled; one changed
// since it was recorded keeps no time.
TEST_F(LibraryTest, SavedFilesSettleOnAWorker) {
  Library library(path);
  const QDateTime settled = QDateTime::currentDateTime().addSecs(-60);
  for (const char *name : {"kept", "edited"}) {
    const QString wav = dir.filePath(name);
    WriteFile(wav, "RIFF one");
    QFile file(wav);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) &&
                file.setFileTime(settled, QFileDevice::FileModificationTime));
    ASSERT_TRUE(library.recordSaved(kDevice, ItemKind::Clip, name, wav));
  }
  WriteFile(dir.filePath("edited"), "RIFF two");
  FileSettler settler(library, 0);
  settler.settleSoon(dir.filePath("kept"));
  settler.settleSoon(dir.filePath("edited"));
  const auto timed = [this](const QString &item) {
    const QString query = "SELECT modified FROM files WHERE item = '" + item + "'";
    return !OtherProgramSql(path, {query}).value_or(QVariant()).isNull();
  };
  EXPECT_TRUE(WaitFor([&] { return timed("kept"); }));
  EXPECT_FALSE(timed("edited"));
}

// A database that cannot be read is set aside and a new one started, by its owner only, never
// by a reader; without a place for one, every call answers empty.
TEST_F(LibraryTest, UnreadableDatabaseIsSetAsideAndANewOneStarted) {
  const QByteArray garbage(8192, '\x5A');
  WriteFile(path, garbage);
  EXPECT_FALSE(Library(path, Library::Access::Reader).isOpen());
  LogCapture log;
  Library library(path);
  ASSERT_TRUE(library.isOpen());
  EXPECT_EQ(log.startingWith("library ").size(), 1u);
  EXPECT_TRUE(library.recordDive(kDevice, {3, Utc(1, 1), Page(3)}));
  const QStringList aside = QDir(dir.path()).entryList({"library.sqlite.broken-*"}, QDir::Files);
  ASSERT_EQ(aside.size(), 1);
  EXPECT_TRUE(library.notice().contains(aside.first())) << qPrintable(library.notice());
  EXPECT_EQ(ReadFile(dir.filePath(aside.first())), garbage);

  Library nowhere(path + "/library.sqlite");  // a file where its folder belongs
  EXPECT_FALSE(nowhere.isOpen() || nowhere.notice().isEmpty());
  EXPECT_FALSE(nowhere.recordDive(kDevice, {1, Utc(1, 1), Page(1)}));
  EXPECT_TRUE(nowhere.devices().isEmpty());
}

// Another copy of the program writing (here a second connection holding the write lock for
// a second) is waited for and shared; a library a newer version wrote is left as it was,
// not set aside, so that going back to an older version loses nothing.
TEST_F(LibraryTest, IsSharedWithAnotherCopyAndLeftAloneWhenANewerVersionWroteIt) {
  Library(path).recordDive(kDevice, {3, Utc(1, 1), Page(3)});
  std::atomic<bool> locked = false;
  std::thread other([&] {
    {
      QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "other copy");
      db.setDatabaseName(path);
      QSqlQuery query(db);
      EXPECT_TRUE(db.open() && query.exec("BEGIN IMMEDIATE") &&
                  query.exec("UPDATE devices SET last_seen = last_seen + 1"));
      locked = true;
      QThread::msleep(1000);
      EXPECT_TRUE(query.exec("COMMIT"));
    }
    QSqlDatabase::removeDatabase("other copy");
  });
  while (!locked) QThread::msleep(1);
  {
    Library shared(path);
    EXPECT_TRUE(shared.isOpen() && shared.notice().isEmpty()) << qPrintable(shared.notice());
    EXPECT_EQ(shared.dives(kDevice).size(), 1);
    EXPECT_TRUE(shared.recordDive(kDevice, {4, Utc(2, 1), Page(4)}));
  }
  other.join();

  ASSERT_TRUE(OtherProgramSql(path, {"PRAGMA user_version = 2"}));
  {
    LogCapture log;
    Library newer(path);
    EXPECT_FALSE(newer.isOpen());
    EXPECT_EQ(newer.notice(), Localized("library_newer"));
    EXPECT_EQ(log.startingWith("library ").size(), 1u);
  }
  EXPECT_TRUE(QDir(dir.path()).entryList({"library.sqlite.broken-*"}).isEmpty());
  // As the newer version would leave it: both dives are there.
  ASSERT_TRUE(OtherProgramSql(path, {"PRAGMA user_version = 1"}));
  EXPECT_EQ(Library(path).dives(kDevice).size(), 2);
}

// A write that fails half-way (here its table is gone) is rolled back, so that the next
// write of the run goes in.
TEST_F(LibraryTest, AWriteThatFailsHalfWayLeavesTheNextOneFree) {
  Library library(path);
  WriteFile(dir.filePath("clip.wav"), "RIFF");
  ASSERT_TRUE(OtherProgramSql(path, {"DROP TABLE files"}));
  LogCapture quiet;
  EXPECT_FALSE(library.recordSaved(kDevice, ItemKind::Clip, "1", dir.filePath("clip.wav")));
  EXPECT_TRUE(library.recordDive(kDevice, {3, Utc(1, 1), Page(3)}));
}

}  // namespace
