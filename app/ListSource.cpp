#include "ListSource.h"

#include "DeviceStack.h"
#include "VoiceIndex.h"

DeviceKey DeviceListSource::device() const {
  return stack_.deviceLibrary.device();
}

std::optional<DiveRecord> DeviceListSource::dive(int row) const {
  const std::optional<DecodedPage> page = stack_.logs.listedPage(diveNumbers().value(row, -1));
  if (!page) return std::nullopt;
  return page->dive;
}

PlayableClip DeviceListSource::clip(int row) const {
  if (row < 0 || row >= shown_.clips.size()) return {};
  return {savedClip(shown_.clips[row].number), shown_.clips[row]};
}

QList<int32_t> DeviceListSource::pinEntries() const {
  const QStringList entries = stack_.voice.index().entries.value_or(QStringList());
  QList<int32_t> pinned;
  // Element 0 is the header, and what follows the last comma is not an entry.
  for (qsizetype i = 1; i + 1 < entries.size(); ++i) {
    if (entries[i].size() >= kVoiceEntryLength) pinned.append(int32_t(i));
  }
  return pinned;
}

QList<ClipRow> DeviceListSource::pins() const {
  QList<ClipRow> pins;
  for (int32_t entry : pinEntries()) {
    const DeviceLibrary::Item item = stack_.deviceLibrary.item(ItemKind::Clip, entry);
    pins.append({entry, item.name, VoiceRecordingTime(stack_.voice.entryText(entry)), 0,
                 int32_t(stack_.deviceLibrary.wireBytes(item))});
  }
  return pins;
}

PlayableClip DeviceListSource::pinnedClip(int pin) const {
  const ClipRow row = pins().value(pin);
  return {savedClip(row.number), row};
}

std::optional<DeviceLibrary::Item> DeviceListSource::fetchable(int pin) const {
  const QList<int32_t> entries = pinEntries();
  if (pin < 0 || pin >= entries.size()) return std::nullopt;
  return stack_.deviceLibrary.item(ItemKind::Clip, entries[pin]);
}

std::optional<QString> DeviceListSource::savedClip(int32_t entry) const {
  return stack_.library.savedFile(stack_.deviceLibrary.device(), ItemKind::Clip,
                                  DeviceLibrary::ClipKey(stack_.voice.entryText(entry)));
}

std::optional<DiveRecord> ShelfListSource::dive(int row) const {
  if (row < 0 || row >= shelf.dives.size()) return std::nullopt;
  return shelf.dives[row];
}

PlayableClip ShelfListSource::clip(int row) const {
  if (row < 0 || row >= shelf.clipFiles.size()) return {};
  return {shelf.clipFiles[row], shelf.clips[row]};
}
