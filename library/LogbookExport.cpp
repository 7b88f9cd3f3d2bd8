#include "LogbookExport.h"

#include <QDir>
#include <QFileInfo>

#include "Localization.h"
#include "StoragePaths.h"
#include "SystemLog.h"
#include "UddfWriter.h"

namespace {

// The clip's WAV in the voice folder, while the library knows it there for this clip,
// unchanged: where it was saved last (saved), or a copy saved there before under the same
// name.
std::optional<QString> ClipFile(const Library &library, const DeviceKey &device,
                                const StoredClip &clip, const std::optional<QString> &saved,
                                const QString &voiceFolder) {
  if (!saved) return std::nullopt;
  const QString there = AppendPathComponent(voiceFolder, QFileInfo(*saved).fileName());
  if (QDir::cleanPath(*saved) == there) return there;
  const std::optional<Library::ItemRef> item = library.itemAt(there);
  if (item && item->device == device && item->kind == ItemKind::Clip && item->itemKey == clip.key)
    return there;
  return std::nullopt;
}

// The dives and clips to write, read from the library first.
struct LogbookToWrite {
  UddfLogbook logbook;
  LogbookExportResult result;  // its path; a failure when there is nothing to write
};

LogbookToWrite ReadLogbook(const Library &library, const LogbookExportRequest &request) {
  LogbookToWrite toWrite;
  LogbookExportResult &result = toWrite.result;
  result.path = QDir::cleanPath(QFileInfo(request.file).absoluteFilePath());
  if (!library.isOpen()) {
    result.failure = ExportFailure::NoLibrary;
    result.sentence = library.notice();
    return toWrite;
  }
  QList<DeviceKey> devices = library.devices();
  if (!request.serial.isEmpty()) {
    devices.removeIf([&request](const DeviceKey &d) { return d.serial != request.serial; });
    if (devices.isEmpty()) {
      result.failure = ExportFailure::UnknownDevice;
      result.sentence = Localized("export_unknown_device").arg(request.serial);
      return toWrite;
    }
  }

  const QString downloads = request.downloads.isEmpty() ? DownloadsFolder() : request.downloads;
  const QString voiceFolder = StoragePathsIn(QFileInfo(downloads).absoluteFilePath()).voiceFolder;
  const QDir logbookFolder = QFileInfo(result.path).absoluteDir();
  UddfLogbook &logbook = toWrite.logbook;
  logbook.generatorVersion = QStringLiteral(MRVTQ5DK_VERSION);
  for (const DeviceKey &key : devices) {
    UddfLogbook::Device device{key.model, key.serial, {}, {}};
    for (const StoredDive &stored : library.dives(key)) {
      if (!request.numbers.isEmpty() && !request.numbers.contains(stored.number)) continue;
      DiveRecord record = DecodeDive(&stored.page);
      // A dive without a date is not on or after any day; the writer counts it otherwise.
      if (request.since.isValid() &&
          !(record.entry.isValid() && record.entryJapanTime().date() >= request.since))
        continue;
      device.dives.append({stored.number, std::move(record)});
    }
    const Library::SavedFiles savedClips = library.savedFiles(key, ItemKind::Clip);
    for (const StoredClip &clip : library.clips(key)) {
      if (const auto file = ClipFile(library, key, clip, savedClips.of(clip.key), voiceFolder)) {
        device.clips.append({clip.key, clip.start, logbookFolder.relativeFilePath(*file)});
      }
    }
    logbook.devices.append(std::move(device));
  }
  return toWrite;
}

LogbookExportResult WriteLogbook(const LogbookToWrite &toWrite) {
  LogbookExportResult result = toWrite.result;
  UddfWritten written;
  result.save = SaveWhole(result.path, [&](QIODevice &file) {
    written = WriteUddf(file, toWrite.logbook);
    return written.ok;
  });
  const QString shown = QDir::toNativeSeparators(result.path);
  if (!result.save.saved()) {
    SystemLog("ExportLogbook %s failed: %s", qUtf8Printable(result.path),
              qUtf8Printable(result.save.reason));
    result.failure = ExportFailure::CannotWrite;
    result.sentence = DescribeSaveFailure(result.save, shown);
    return result;
  }
  result.dives = written.dives;
  result.clips = written.clips;
  result.damagedDives = written.damagedDives;
  result.sentence = written.dives == 0
                        ? Localized("export_no_dives").arg(shown)
                        : Localized("export_written")
                              .arg(Localized("count_dives", written.dives),
                                   Localized("count_voice_clips", written.clips), shown);
  if (written.damagedDives > 0)
    result.sentence += u' ' + Localized("export_dives_without_date", written.damagedDives);
  return result;
}

}  // namespace

LogbookExportResult ExportLogbook(const Library &library, const LogbookExportRequest &request) {
  const LogbookToWrite toWrite = ReadLogbook(library, request);
  return toWrite.result.ok() ? WriteLogbook(toWrite) : toWrite.result;
}
