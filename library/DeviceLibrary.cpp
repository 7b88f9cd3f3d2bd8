#include "DeviceLibrary.h"

#include "DiveLogPage.h"
#include "DiveRecord.h"
#include "VoiceIndex.h"

namespace {

constexpr char kModel[] = "QM482";

}  // namespace

DeviceLibrary::DeviceLibrary(Session &session, VoiceTransfer &voice, LogTransfer &logs,
                             Library &library)
    : session_(session), voice_(voice), logs_(logs), library_(library) {
  logs_.setPageHandler([this](int32_t number, const DecodedPage &page) {
    library_.recordDive(device(), StoredDive{number, page.dive.entry, page.bytes});
  });
  // A name is taken when the library saved another recording there: two clips of the
  // same minute share a name. A file the library did not save is replaced, as before.
  voice_.setNameTakenByAnother([this](const QString &path, const QString &entry) {
    const std::optional<Library::ItemRef> held = library_.itemAt(path);
    return held && (held->kind != ItemKind::Clip || held->itemKey != ClipKey(entry) ||
                    !(held->device == device()));
  });
}

DeviceLibrary::~DeviceLibrary() {
  logs_.setPageHandler(nullptr);
  voice_.setNameTakenByAnother(nullptr);
}

DeviceKey DeviceLibrary::device() const {
  return DeviceKey{QString::fromLatin1(kModel), session_.model().state().identity.serialNumber};
}

qint64 DeviceLibrary::wireBytes(const Item &item) const {
  if (item.kind == ItemKind::Dive)
    return logs_.hasListedPage(item.number) ? 0 : DiveLogPage::kBytes;
  const VoiceIndexState index = voice_.index();
  return GetVoiceDataSize(index.entries.value_or(QStringList()).value(item.number), index.ring);
}

QString DeviceLibrary::ClipKey(const QString &entry) {
  const QDateTime time = VoiceRecordingTime(entry);
  return time.isValid() ? time.toString(QStringLiteral("yyyyMMddHHmmss")) : entry;
}

QString DeviceLibrary::diveKey(int32_t number) const {
  const std::optional<DecodedPage> page = logs_.listedPage(number);
  if (!page) return QString::number(number);  // never the case for a listed dive
  return DiveKey(number, page->dive);
}

QString DeviceLibrary::DiveKey(int32_t number, const DiveRecord &dive) {
  return QStringLiteral("%1 %2").arg(number).arg(
      dive.entry.toString(QStringLiteral("yyyyMMddHHmmss")));
}

QList<DeviceLibrary::Item> DeviceLibrary::listed() {
  const DeviceKey key = device();
  const DeviceState lists = session_.model().state();
  QList<Item> items;
  const Library::SavedFiles savedDives = library_.savedFiles(key, ItemKind::Dive);
  for (const DiveRow &dive : lists.dives) {
    const QString itemKey = diveKey(dive.number);
    items.append(Item{ItemKind::Dive, dive.number, itemKey, dive.text, savedDives.of(itemKey),
                      dive.damage.has_value()});
  }
  const VoiceIndexState index = voice_.index();
  const QStringList entries = index.entries.value_or(QStringList());
  // Every clip the device holds is remembered, listed or not (element 0 is the header,
  // and what follows the last comma is not an entry).
  QList<StoredClip> held;
  for (qsizetype i = 1; i + 1 < entries.size(); ++i) {
    if (entries[i].size() < kVoiceEntryLength) continue;
    held.append({ClipKey(entries[i]), entries[i], VoiceRecordingTime(entries[i])});
  }
  library_.recordClips(key, held);
  const Library::SavedFiles savedClips = library_.savedFiles(key, ItemKind::Clip);
  for (const ClipRow &clip : lists.clips) {
    const QString itemKey = ClipKey(entries.value(clip.number));
    items.append(Item{ItemKind::Clip, clip.number, itemKey, clip.text, savedClips.of(itemKey)});
  }
  return items;
}

DeviceLibrary::Item DeviceLibrary::item(ItemKind kind, int32_t number) const {
  const DeviceState lists = session_.model().state();
  const bool dive = kind == ItemKind::Dive;
  const qsizetype diveRow = RowNumbers(lists.dives).indexOf(number);
  const QString name = dive ? RowTexts(lists.dives).value(diveRow)
                            : RowTexts(lists.clips).value(RowNumbers(lists.clips).indexOf(number));
  const bool damaged = dive && diveRow >= 0 && lists.dives[diveRow].damage.has_value();
  return Item{kind, number,       dive ? diveKey(number) : ClipKey(voice_.entryText(number)),
              name, std::nullopt, damaged};
}

void DeviceLibrary::save(const Item &item, OutcomeHandler done, bool overTheWire) {
  auto recordThenTell = [this, item, done = std::move(done)](const Outcome &outcome) {
    record(item, outcome);
    if (done) done(outcome);
  };
  if (item.kind == ItemKind::Clip) {
    voice_.downloadClip(item.number, std::move(recordThenTell));
    return;
  }
  const Outcome fromListing = overTheWire
                                  ? Outcome{Operation::DownloadDive, Failure::NotOnDevice, {}, {}}
                                  : logs_.saveListedDive(item.number);
  if (fromListing.failure == Failure::NotOnDevice) {
    logs_.downloadDive(item.number, std::move(recordThenTell));
    return;
  }
  recordThenTell(fromListing);
}

void DeviceLibrary::record(const Item &item, const Outcome &outcome) {
  if (!outcome.ok() || outcome.path.isEmpty()) return;
  if (library_.recordSaved(device(), item.kind, item.key, outcome.path))
    settler_.settleSoon(outcome.path);
}
