#include "LibraryShelf.h"

#include <QFileInfo>

#include "DeviceLibrary.h"
#include "LogIndex.h"

namespace {

// The clips are kept behind the 44-byte header of a WAV file.
constexpr qint64 kWaveHeaderBytes = 44;

// A day as yyyymmdd, the way the voice index's entries give it.
int32_t DayNumber(QDate day) {
  return day.year() * 10000 + day.month() * 100 + day.day();
}

}  // namespace

std::optional<LibraryShelf> ReadShelf(const Library &library, const std::optional<DeviceKey> &shown,
                                      int32_t fromDay) {
  LibraryShelf shelf;
  shelf.devices = library.devices();
  if (shelf.devices.isEmpty()) return std::nullopt;
  const DeviceKey device = shown.value_or(shelf.devices.first());
  shelf.device = device;
  const Library::SavedFiles savedDives = library.savedFiles(device, ItemKind::Dive);
  for (const StoredDive &stored : library.dives(device)) {
    const DiveRecord dive = DecodeDive(&stored.page);
    ++shelf.heldDives;
    // A damaged page is listed whatever the period, as the device's list does.
    if (!dive.damage && DiveLogDayNumber(dive) < fromDay) continue;
    shelf.diveRows.append(ListedDive(stored.number, dive));
    shelf.dives.append(dive);
    shelf.diveFiles.append(savedDives.of(DeviceLibrary::DiveKey(stored.number, dive)));
  }
  const Library::SavedFiles savedClips = library.savedFiles(device, ItemKind::Clip);
  for (const StoredClip &clip : library.clips(device)) {
    const std::optional<QString> file = savedClips.of(clip.key);
    if (!file) continue;  // nothing to play
    ++shelf.heldClips;
    if (DayNumber(clip.start.date()) < fromDay) continue;
    const int32_t audio = int32_t(std::max<qint64>(0, QFileInfo(*file).size() - kWaveHeaderBytes));
    shelf.clips.append({0, QString(), clip.start, 0, audio});
    shelf.clipFiles.append(*file);
  }
  return shelf;
}

QString ShelfDeviceName(const DeviceKey &device) {
  return QStringLiteral("%1 SN.%2").arg(device.model, device.serial);
}
