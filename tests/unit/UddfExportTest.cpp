#include <gtest/gtest.h>

#include <QDir>
#include <QProcess>
#include <QTimeZone>
#include <QXmlStreamReader>

#include "DiveFlags.h"
#include "DiveRecord.h"
#include "LogbookExport.h"
#include "SimContents.h"
#include "TestSupport.h"

namespace {

// Every document must pass the published schema; without xmllint the test fails.
void ExpectValid(const QString &path) {
  QProcess xmllint;
  xmllint.start("xmllint", {"--noout", "--schema", UDDF_SCHEMA, path});
  ASSERT_TRUE(xmllint.waitForFinished(60000)) << "xmllint missing: run scripts/install-deps.sh";
  EXPECT_EQ(xmllint.exitCode(), 0) << xmllint.readAllStandardError().constData();
}

struct Waypoint {
  QStringList alarms;
  double depth = 0, divetime = 0, kelvin = 0;
};
struct ReadDive {
  QString number, datetime;
  double greatest = 0, duration = 0;
  QList<Waypoint> points;
  QStringList paras, clipLinks;
};
struct Logbook {
  QStringList days;
  QMap<QString, QString> audio;  // id -> objectname
  QList<ReadDive> dives;
};

Logbook ReadBack(const QString &path) {
  const QByteArray bytes = ReadFile(path);
  QXmlStreamReader xml(bytes);
  Logbook book;
  QString audio;
  while (!xml.atEnd()) {
    if (xml.readNext() != QXmlStreamReader::StartElement) continue;
    const QString name = xml.name().toString(), id = xml.attributes().value("id").toString();
    const auto value = [&xml] { return xml.readElementText(); };
    if (name == "repetitiongroup")
      book.days << id;
    else if (name == "audio")
      audio = id;
    else if (name == "objectname")
      book.audio[audio] = value();
    else if (name == "dive")
      book.dives.append(ReadDive{});
    else if (name == "divenumber")
      book.dives.last().number = value();
    else if (name == "datetime")
      book.dives.last().datetime = value();
    else if (name == "greatestdepth")
      book.dives.last().greatest = value().toDouble();
    else if (name == "diveduration")
      book.dives.last().duration = value().toDouble();
    else if (name == "waypoint")
      book.dives.last().points.append(Waypoint{});
    else if (name == "alarm")
      book.dives.last().points.last().alarms << value();
    else if (name == "depth")
      book.dives.last().points.last().depth = value().toDouble();
    else if (name == "divetime")
      book.dives.last().points.last().divetime = value().toDouble();
    else if (name == "temperature")
      book.dives.last().points.last().kelvin = value().toDouble();
    else if (name == "para")
      book.dives.last().paras << value();
    else if (name == "link" && xml.attributes().value("ref").startsWith(u"clip-"))
      book.dives.last().clipLinks << xml.attributes().value("ref").toString();
  }
  EXPECT_FALSE(xml.hasError()) << qPrintable(xml.errorString());
  return book;
}

const QDateTime kFullEntry(QDate(2024, 3, 1), QTime(23, 30), QTimeZone::utc());  // 08:30 JST
const QDateTime kFlagsEntry(QDate(2024, 3, 2), QTime(3, 0), QTimeZone::utc());   // 40 min
const QDateTime kLaterEntry(QDate(2024, 3, 5), QTime(1, 0), QTimeZone::utc());

class UddfExport : public ::testing::Test {
 protected:
  void SetUp() override {
    sim::Dive full = sim::GenerateDive(1, kFullEntry, 84, 10, 2710, 268, 231);
    sim::Dive flags = sim::GenerateDive(2, kFlagsEntry, 40, 10, 1830, 270, 215);
    flags.warnings = 0xBF;     // every warning the summary names
    flags.information = 0x3C;  // every information bit
    flags.profile[10].warnings = flags.profile[11].warnings = 0xFF;
    flags.profile[20].warnings = 0x04;
    const sim::Dive later = sim::GenerateDive(3, kLaterEntry, 30, 10, 1200, 270, 215);
    int number = 6;
    for (const sim::Dive &dive : {full, flags, later}) {
      pages << sim::DivePage(dive);
      ASSERT_TRUE(library.recordDive(device, {number++, dive.entry, pages.last()}));
    }
    ASSERT_EQ(DecodeDive(&pages[0]).samples.size(), 504);
    saveClip("20240302031005", kFlagsEntry.addSecs(605));          // 10:05 into the flags dive
    saveClip("20240302034001", kFlagsEntry.addSecs(40 * 60 + 1));  // a second after its exit
    QDir().mkpath(home.path() + "/book");
  }
  void saveClip(const QString &key, const QDateTime &start) {
    const QString path = home.downloads() + "/Mrvtq5dk/voice/" + key + ".wav";
    QDir().mkpath(QFileInfo(path).path());
    WriteFile(path, "RIFF" + key.toLatin1());
    ASSERT_TRUE(library.recordClip(device, {key, key, start}));
    ASSERT_TRUE(library.recordSaved(device, ItemKind::Clip, key, path));
  }
  LogbookExportResult exportTo(const QString &file, QDate since = {}, QString serial = {}) {
    return ExportLogbook(library, {file, home.downloads(), since, serial});
  }

  TemporaryHome home;
  Library library{home.path() + "/library.sqlite"};
  DeviceKey device{"QM482", "28417305"};
  QList<QByteArray> pages;
};

TEST_F(UddfExport, DivesReadBackAsDecodedAndTheClipDuringADiveIsLinked) {
  const QString file = home.path() + "/book/logbook.uddf";
  const LogbookExportResult result = exportTo(file);
  ASSERT_TRUE(result.ok()) << qPrintable(result.sentence);
  EXPECT_EQ(result.dives, 3);
  EXPECT_EQ(result.clips, 1);
  ExpectValid(file);
  const Logbook book = ReadBack(file);
  EXPECT_EQ(book.days, QStringList({"day-2024-03-02", "day-2024-03-05"}));
  ASSERT_EQ(book.dives.size(), 3);
  EXPECT_EQ(book.dives[0].datetime, "2024-03-02T08:30:00+09:00");  // as the CSV dates it
  for (int i = 0; i < 3; ++i) {
    const DiveRecord dive = DecodeDive(&pages[i]);
    const ReadDive &read = book.dives[i];
    EXPECT_EQ(read.number, QString::number(6 + i + 1));
    EXPECT_EQ(read.datetime, dive.entryJapanTime().toString(Qt::ISODate));
    EXPECT_DOUBLE_EQ(read.greatest, dive.maxDepthMetres());
    EXPECT_EQ(read.duration, dive.diveTimeSeconds());
    ASSERT_EQ(read.points.size(), dive.samples.size());
    for (qsizetype k : {qsizetype(0), dive.samples.size() / 2, dive.samples.size() - 1}) {
      EXPECT_DOUBLE_EQ(read.points[k].depth, dive.samples[k].depthMetres());
      EXPECT_EQ(read.points[k].divetime, dive.samples[k].seconds);
      EXPECT_NEAR(read.points[k].kelvin, dive.samples[k].temperatureCelsius() + 273.15, 0.006);
    }
  }

  // Warnings UDDF has a keyword for are alarms; the rest, and the flags, are in the notes.
  const ReadDive &flags = book.dives[1];
  EXPECT_EQ(flags.points[10].alarms, QStringList({"ascent", "deco", "error"}));
  EXPECT_EQ(flags.points[20].alarms, QStringList({"deco"}));
  EXPECT_TRUE(flags.points[12].alarms.isEmpty());
  const QString all = flags.paras.join('\n');
  EXPECT_TRUE(all.contains("Warnings: " + DiveWarningWords(0xBF).join(", "))) << qPrintable(all);
  EXPECT_TRUE(all.contains("Device status: " + InformationWords(0x3C).join(", ")));
  for (const int32_t bit : {0x08, 0x10, 0x20, 0x40})
    EXPECT_TRUE(all.contains(SampleWarningWords(bit).first() + " at 1:40–1:50 into the dive"));
  EXPECT_TRUE(all.contains("Voice clip 10:05 into the dive"));

  // Only the clip recorded during the dive, by a path relative to the logbook's folder.
  ASSERT_EQ(flags.clipLinks.size(), 1);
  EXPECT_EQ(book.audio.keys(), flags.clipLinks);
  EXPECT_EQ(book.audio.first(), "../Downloads/Mrvtq5dk/voice/20240302031005.wav");
  EXPECT_TRUE(QFileInfo::exists(home.path() + "/book/" + book.audio.first()));
}

TEST_F(UddfExport, FiltersAndAnEmptyLibraryStillGiveValidDocuments) {
  const QString later = home.path() + "/later.uddf";
  EXPECT_EQ(exportTo(later, QDate(2024, 3, 5)).dives, 1);
  ExpectValid(later);
  EXPECT_EQ(exportTo(later, {}, "99999999").failure, ExportFailure::UnknownDevice);

  Library empty(home.path() + "/empty.sqlite");
  const QString none = home.path() + "/none.uddf";
  const LogbookExportResult result = ExportLogbook(empty, {none, home.downloads(), {}, {}});
  ASSERT_TRUE(result.ok());
  EXPECT_EQ(result.dives, 0);
  EXPECT_TRUE(result.sentence.contains("no dives")) << qPrintable(result.sentence);
  ExpectValid(none);
}

TEST_F(UddfExport, AFileThatCannotBeWrittenFailsAndLeavesNothing) {
  const QString folder = home.path() + "/book";
  {
    FileSizeLimit limit(4096);  // the disk fills in the middle of the document
    const LogbookExportResult result = exportTo(folder + "/logbook.uddf");
    EXPECT_EQ(result.failure, ExportFailure::CannotWrite);
    EXPECT_TRUE(result.sentence.contains("logbook.uddf could not be saved"));
  }
  EXPECT_TRUE(QDir(folder).isEmpty());

  // The command line reads the library in the (temporary) home's data folder.
  WriteFile(home.path() + "/blocked", "a file where the folder belongs");
  const ProgramRun run = RunProcess(MRVTQ5DK_CLI_PATH, {"export", home.path() + "/blocked/x.uddf"});
  EXPECT_EQ(run.status, 6) << qPrintable(run.err);
  EXPECT_FALSE(QFileInfo::exists(home.path() + "/blocked/x.uddf"));
}

}  // namespace
