#include <gtest/gtest.h>

#include <QDir>
#include <QRegularExpression>
#include <QTimeZone>
#include <QXmlStreamReader>

#include "DiveFlags.h"
#include "DiveLogPage.h"
#include "DiveRecord.h"
#include "LogbookExport.h"
#include "SimContents.h"
#include "TestSupport.h"
#include "UddfSchema.h"

namespace {

// The document's texts by element name and its attributes as "element@attribute", each in
// document order; an alarm reads "<dive>:<waypoint> <keyword>", both counted from 0.
QMap<QString, QStringList> ReadBack(const QString &path) {
  const QByteArray bytes = ReadFile(path);
  QXmlStreamReader xml(bytes);
  QMap<QString, QStringList> read;
  QString element;
  int dive = -1, waypoint = -1;
  while (!xml.atEnd()) {
    xml.readNext();
    if (xml.isStartElement()) {
      element = xml.name().toString();
      if (element == "dive") ++dive, waypoint = -1;
      waypoint += element == "waypoint";
      for (const QXmlStreamAttribute &attribute : xml.attributes())
        read[element + "@" + attribute.name().toString()] << attribute.value().toString();
    } else if (xml.isCharacters() && !xml.isWhitespace()) {
      const QString at = element == "alarm" ? QString("%1:%2 ").arg(dive).arg(waypoint) : "";
      read[element] << at + xml.text().toString();
    }
  }
  EXPECT_FALSE(xml.hasError()) << qPrintable(xml.errorString());
  return read;
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
    return ExportLogbook(library, {file, home.downloads(), since, serial, {}});
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
  EXPECT_TRUE(ValidUddf(ReadFile(file)));
  QMap<QString, QStringList> read = ReadBack(file);
  EXPECT_EQ(read["repetitiongroup@id"], QStringList({"day-2024-03-02", "day-2024-03-05"}));
  EXPECT_EQ(read["datetime"].value(0), "2024-03-02T08:30:00+09:00");  // as the CSV dates it
  qsizetype k = 0;  // every waypoint of every dive, in order
  for (int i = 0; i < 3; ++i) {
    const DiveRecord dive = DecodeDive(&pages[i]);
    EXPECT_EQ(read["divenumber"].value(i), QString::number(6 + i + 1));
    EXPECT_EQ(read["datetime"].value(i), dive.entryJapanTime().toString(Qt::ISODate));
    EXPECT_DOUBLE_EQ(read["greatestdepth"].value(i).toDouble(), dive.maxDepthMetres());
    EXPECT_EQ(read["diveduration"].value(i).toInt(), dive.diveTimeSeconds());
    for (const DiveSample &sample : dive.samples) {
      EXPECT_DOUBLE_EQ(read["depth"].value(k).toDouble(), sample.depthMetres());
      EXPECT_EQ(read["divetime"].value(k).toInt(), sample.seconds);
      EXPECT_NEAR(read["temperature"].value(k++).toDouble(), sample.temperatureCelsius() + 273.15,
                  0.006);
    }
  }
  EXPECT_EQ(read["depth"].size(), k);

  // Warnings UDDF has a keyword for are alarms; the rest, and the flags, are in the notes.
  EXPECT_EQ(read["alarm"], QStringList({"1:10 ascent", "1:10 deco", "1:10 error", "1:11 ascent",
                                        "1:11 deco", "1:11 error", "1:20 deco"}));
  const QString notes = read["para"].join('\n');
  EXPECT_TRUE(notes.contains("Warnings: " + DiveWarningWords(0xBF).join(", ")))
      << qPrintable(notes);
  EXPECT_TRUE(notes.contains("Device status: " + InformationWords(0x3C).join(", ")));
  for (const int32_t bit : {0x08, 0x10, 0x20, 0x40})
    EXPECT_TRUE(notes.contains(SampleWarningWords(bit).first() + " at 1:40–1:50 into the dive"));
  EXPECT_TRUE(notes.contains("Voice clip 10:05 into the dive"));

  // Only the clip recorded during the dive, by a path relative to the logbook's folder.
  EXPECT_EQ(read["link@ref"].filter(QRegularExpression("^clip-")), read["audio@id"]);
  EXPECT_EQ(read["objectname"], QStringList("../Downloads/Mrvtq5dk/voice/20240302031005.wav"));
  EXPECT_TRUE(QFileInfo::exists(home.path() + "/book/" + read["objectname"].value(0)));
}

// A library without dives still gives a valid document, though a repetition group needs a
// dive; a file that cannot be written is the command line's status 6.
TEST_F(UddfExport, FiltersAnEmptyLibraryAndAFileThatCannotBeWritten) {
  const QString later = home.path() + "/later.uddf";
  EXPECT_EQ(exportTo(later, QDate(2024, 3, 5)).dives, 1);
  // A dive is on the day Japan time gives it: 23:30 UTC on the 1st is the 2nd, 08:30.
  EXPECT_EQ(exportTo(later, QDate(2024, 3, 2)).dives, 3);
  EXPECT_TRUE(ValidUddf(ReadFile(later)));
  EXPECT_EQ(exportTo(later, {}, "99999999").failure, ExportFailure::UnknownDevice);

  Library empty(home.path() + "/empty.sqlite");
  const QString none = home.path() + "/none.uddf";
  const LogbookExportResult result = ExportLogbook(empty, {none, home.downloads(), {}, {}, {}});
  ASSERT_TRUE(result.ok());
  EXPECT_TRUE(result.sentence.contains("no dives")) << qPrintable(result.sentence);
  EXPECT_TRUE(ValidUddf(ReadFile(none)));

  // The command line reads the library in the (temporary) home's data folder.
  WriteFile(home.path() + "/blocked", "a file where the folder belongs");
  const ProgramRun run = RunProcess(MRVTQ5DK_CLI_PATH, {"export", home.path() + "/blocked/x.uddf"});
  EXPECT_EQ(run.status, 6);
  EXPECT_TRUE(run.err.contains("x.uddf could not be saved")) << qPrintable(run.err);
}

}  // namespace

// Damaged is only what no device could have recorded: such a page is left out of the export
// (above) and of Save all new. A clock never set or set wrong, or a profile size past the
// page's slots, is still a dive.
TEST(PageDamage, OnlyWhatNoDeviceCouldHaveRecorded) {
  using namespace DiveLogPage;
  const QByteArray whole = sim::DivePage(sim::GenerateContents(1, QDate(2026, 11, 23)).dives[0]);
  const auto damage = [&whole](QList<std::pair<int, int>> bytes) {
    QByteArray page = whole;
    for (const auto &[at, value] : bytes) page[at] = char(value);
    return DecodePage(page).dive.damage;
  };
  for (const auto &odd : {QList<std::pair<int, int>>{},
                          {{kYear, 0x00}},
                          {{kYear, 0x99}},
                          {{kProfileSize, 0xFF}},
                          {{kTemperature, 0xCE}, {kTemperature + 1, 0xFF}}})
    EXPECT_EQ(damage(odd), std::nullopt) << odd.value(0).first;  // -5.0 °C is still water
  EXPECT_EQ(damage({{kMonth, 0x13}}), PageDamage::EntryOffCalendar);
  EXPECT_EQ(damage({{kDay, 0x00}}), PageDamage::EntryOffCalendar);
  EXPECT_EQ(damage({{kEntryMinute, 0x1A}}), PageDamage::EntryOffCalendar);  // reads as 20
  EXPECT_EQ(damage({{kExitHour, 0x25}}), PageDamage::ExitOffCalendar);
  EXPECT_EQ(damage({{kAverageDepth + 1, 0x7F}}), PageDamage::AverageBelowMaximum);
  EXPECT_EQ(damage({{kTemperature, 0xF5}, {kTemperature + 1, 0x01}}), PageDamage::WaterTemperature);
  EXPECT_EQ(DecodePage(whole.left(4000)).dive.damage, PageDamage::Short);
}
