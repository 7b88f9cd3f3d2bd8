#pragma once

#include <QList>
#include <QString>
#include <optional>

#include "FileSettler.h"
#include "Library.h"
#include "LogTransfer.h"
#include "VoiceTransfer.h"

// The library as the connected device's lists see it: every dive page the session reads
// and every clip entry the device lists are remembered, each listed item knows whether it
// is saved, and every item saved through here is recorded. Main thread.
class DeviceLibrary {
 public:
  // One row of the device's lists.
  struct Item {
    ItemKind kind = ItemKind::Dive;
    int32_t number = 0;                // a dive's history number, or a clip's index entry (1-based)
    QString key;                       // the library's key: see diveKey and ClipKey
    QString name;                      // the row as the list shows it
    std::optional<QString> savedPath;  // the file, while it is there unchanged
    bool damaged = false;              // a dive page no device could have recorded
  };

  DeviceLibrary(Session &session, VoiceTransfer &voice, LogTransfer &logs, Library &library);
  ~DeviceLibrary();
  DeviceLibrary(const DeviceLibrary &) = delete;
  DeviceLibrary &operator=(const DeviceLibrary &) = delete;

  DeviceKey device() const;
  // The lists of the last listing: dives, then clips, in list order. Also records the clip
  // entries the device listed.
  QList<Item> listed();
  // The listed item of that kind and number, without asking whether it is saved.
  Item item(ItemKind kind, int32_t number) const;
  // Saves one item and records the file; done hears how it ended. A dive comes from the
  // listing's page when it has one, unless asked for over the wire.
  static constexpr bool kOverTheWire = true;
  void save(const Item &item, OutcomeHandler done, bool overTheWire = false);

  // What saving the item takes on the wire: a clip's size; nothing for a dive the
  // listing read.
  qint64 wireBytes(const Item &item) const;

  // A clip's library key: its recording time on the device's clock.
  static QString ClipKey(const QString &entry);
  // A dive's library key: its history number and its start time, so that a device whose
  // numbering starts again (its memory cleared) does not pass new dives off as saved.
  QString diveKey(int32_t number) const;
  // The same for a dive whose page is at hand.
  static QString DiveKey(int32_t number, const DiveRecord &dive);

 private:
  void record(const Item &item, const Outcome &outcome);

  Session &session_;
  VoiceTransfer &voice_;
  LogTransfer &logs_;
  Library &library_;
  FileSettler settler_{library_};
};
