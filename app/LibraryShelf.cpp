#include "LibraryShelf.h"

#include <QFileInfo>

#include "DeviceLibrary.h"
#include "LogIndex.h"
#include "VoiceIndex.h"

namespace {

// The clips are 16-bit mono PCM at 8000 Hz behind a 44-byte header.
constexpr qint64 kWaveHeaderBytes = 44;
constexpr double kWaveBytesPerSecond = 8000 * 2;

// The clip's length in whole minutes, as the device's list would show it.
int ClipMinutes(const QString &wavePath) {
  const qint64 bytes = std::max<qint64>(0, QFileInfo(wavePath).size() - kWaveHeaderBytes);
  return ListedMinutes(static_cast<double>(bytes) / kWaveBytesPerSecond);
}

// A day as yyyymmdd, the way the voice index's entries give it.
int32_t DayNumber(QDate day) {
  return day.year() * 10000 + day.month() * 100 + day.day();
}

}  // namespace

LibraryShelf ReadShelf(const Library &library, const DeviceKey &device, int32_t fromDay) {
  LibraryShelf shelf;
  shelf.device = device;
  for (const StoredDive &stored : library.dives(device)) {
    const DiveRecord dive = DecodeDive(&stored.page);
    ++shelf.heldDives;
    if (DiveLogDayNumber(dive) < fromDay) continue;
    shelf.diveRows.append(DiveLogRowText(dive));
    shelf.dives.append(dive);
    shelf.diveNumbers.append(stored.number);
    shelf.diveFiles.append(
        library.savedFile(device, ItemKind::Dive, DeviceLibrary::DiveKey(stored.number, dive)));
  }
  for (const StoredClip &clip : library.clips(device)) {
    const std::optional<QString> file = library.savedFile(device, ItemKind::Clip, clip.key);
    if (!file) continue;  // nothing to play
    ++shelf.heldClips;
    if (DayNumber(clip.start.date()) < fromDay) continue;
    shelf.clipRows.append(QStringLiteral("%1 %2min")
                              .arg(clip.start.toString(QStringLiteral("yyyy/MM/dd HH:mm")))
                              .arg(ClipMinutes(*file)));
    shelf.clipFiles.append(*file);
    shelf.clipTimes.append(clip.start);
  }
  return shelf;
}

QString ShelfDeviceName(const DeviceKey &device) {
  return QStringLiteral("%1 SN.%2").arg(device.model, device.serial);
}
