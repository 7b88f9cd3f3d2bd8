#include "BigLibrary.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTimeZone>
#include <cmath>
#include <random>

#include "DeviceLibrary.h"
#include "DiveLogCsv.h"
#include "DiveRecord.h"
#include "Library.h"
#include "LogIndex.h"
#include "StoragePaths.h"
#include "WaveFile.h"

namespace {

constexpr char kModel[] = "QM482";

}  // namespace

sim::Contents HistoryContents(const DeviceHistory &history, int diveEveryHours) {
  sim::Contents contents;
  contents.serialNumber = history.serial.toLatin1();
  std::mt19937 random(history.serial.toUInt());
  // Each device's dives start at an hour of their own, so that no two devices' files share a
  // name (they are named by the minute).
  const int hour = 9 + int(history.serial.toUInt() % 5);
  const QDateTime newest(QDate::currentDate().addDays(-1), QTime(hour, 0), QTimeZone::utc());
  for (int i = history.dives - 1; i >= 0; --i) {
    const QDateTime entry = newest.addSecs(-qint64(i) * diveEveryHours * 3600);
    const int minutes = 30 + int(random() % 40);
    const int maxDepthCm = 800 + int(random() % 3200);
    contents.dives.append(
        sim::GenerateDive(random(), entry, minutes, 10, maxDepthCm, 260, 180 + int(random() % 60)));
  }
  contents.totalDives = history.dives;
  // Clips on the newest dives, ten minutes in. Over the years they go round the ring.
  int block = contents.ringFirst;
  for (int i = 0; i < history.clips && i < history.dives; ++i) {
    const sim::Dive &dive = contents.dives[contents.dives.size() - 1 - i];
    // Most clips are short, a few long: about 3 MB on average between 1 and 8 MB.
    const double share = std::pow(double(random() % 1000) / 1000.0, 2.5);
    const int blocks =
        history.minClipBlocks + int(share * (history.maxClipBlocks - history.minClipBlocks));
    if (block + blocks - 1 > contents.ringLast) block = contents.ringFirst;
    contents.clips.prepend(
        {dive.entry.addSecs(600), block, block + blocks - 1, uint32_t(random())});
    block += blocks;
  }
  return contents;
}

LibraryFootprint WriteLibrary(const QVector<DeviceHistory> &devices) {
  const StoragePaths paths = StoragePathsIn(DownloadsFolder());
  QDir().mkpath(paths.voiceFolder);
  QDir().mkpath(paths.logFolder);
  Library library;
  LibraryFootprint footprint;
  for (const DeviceHistory &history : devices) {
    const DeviceKey key{QString::fromLatin1(kModel), history.serial};
    const sim::Contents contents = HistoryContents(history);
    for (qsizetype i = 0; i < contents.dives.size(); ++i) {
      const int32_t number = int32_t(i) + 1;
      const QByteArray page = sim::DivePage(contents.dives[i]);
      const DiveRecord dive = DecodeDive(&page);
      const QString path =
          paths.logFolder + u'/' + DiveLogFileBaseName(dive) + QStringLiteral("_profile.csv");
      if (!DiveLogCsvSave(path, dive).saved()) qFatal("could not write %s", qPrintable(path));
      library.recordDive(key, StoredDive{number, dive.entry, page});
      library.recordSaved(key, ItemKind::Dive, DeviceLibrary::DiveKey(number, dive), path);
      ++footprint.dives;
      footprint.diveBytes += QFileInfo(path).size();
    }
    const VoiceBlockRing ring{contents.ringFirst, contents.ringLast};
    for (const sim::Clip &clip : contents.clips) {
      const QString entry = QString::fromLatin1(sim::ClipEntry(clip));
      const std::optional<QString> path = MakeVoiceWaveFileName(entry, paths.voiceFolder, ring);
      QFile file(path.value_or(QString()));
      if (!path || !file.open(QIODevice::WriteOnly) ||
          !WriteWave(file, sim::ClipAudio(clip, ring.first, ring.last)))
        qFatal("could not write the clip %s", qPrintable(entry));
      file.close();
      const QString clipKey = DeviceLibrary::ClipKey(entry);
      library.recordClip(key, StoredClip{clipKey, entry, VoiceRecordingTime(entry)});
      library.recordSaved(key, ItemKind::Clip, clipKey, *path);
      ++footprint.clips;
      footprint.clipBytes += file.size();
    }
  }
  // As a diver's library stands: its files saved days ago, and looked at once since (each
  // read whole for its hash, then known by its size and time).
  const QDateTime daysAgo = QDateTime::currentDateTime().addDays(-3);
  for (const QString &folder : {paths.voiceFolder, paths.logFolder}) {
    for (const QString &name : QDir(folder).entryList(QDir::Files)) {
      QFile file(folder + u'/' + name);
      if (!file.open(QIODevice::ReadWrite) ||
          !file.setFileTime(daysAgo, QFileDevice::FileModificationTime))
        qFatal("could not age %s", qPrintable(file.fileName()));
    }
  }
  QElapsedTimer firstLook;
  firstLook.start();
  for (const DeviceHistory &history : devices) {
    const DeviceKey key{QString::fromLatin1(kModel), history.serial};
    library.savedFiles(key, ItemKind::Dive);
    library.savedFiles(key, ItemKind::Clip);
  }
  footprint.firstLookMs = firstLook.elapsed();
  return footprint;
}
