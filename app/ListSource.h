#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <optional>

#include "DeviceLibrary.h"
#include "DeviceState.h"
#include "DiveRecord.h"
#include "LibraryShelf.h"

class DeviceStack;

// A clip the window can play: its saved file, when there is one, and its row.
struct PlayableClip {
  std::optional<QString> file;
  ClipRow row;
};

// What the two lists stand for, row by row: the device plugged in, or what the library
// kept of a device while none is. The window reads rows, dives, clips and pins through it,
// whichever it is.
class ListSource {
 public:
  virtual ~ListSource() = default;
  // Whether the lists show the library's memory of a device rather than a device.
  virtual bool fromLibrary() const = 0;
  // The device whose dives the lists show.
  virtual DeviceKey device() const = 0;
  // The rows of the two lists, in list order.
  virtual QList<ClipRow> clipRows() const = 0;
  virtual QList<DiveRow> diveRows() const = 0;
  // The history numbers of the listed dives, in list order.
  QList<int32_t> diveNumbers() const { return RowNumbers(diveRows()); }
  // The dive of a row of the dive list; none when its page was not read.
  virtual std::optional<DiveRecord> dive(int row) const = 0;
  // The clip of a row of the clip list.
  virtual PlayableClip clip(int row) const = 0;
  // Each clip that may be pinned on a dive: when it began (on the device's clock) and its
  // audio bytes; a pin is known by its place in this list.
  virtual QList<ClipRow> pins() const = 0;
  virtual PlayableClip pinnedClip(int pin) const = 0;
  // The device's item for a pinned clip that is not saved yet, to fetch before it plays.
  virtual std::optional<DeviceLibrary::Item> fetchable(int pin) const = 0;
};

// The lists of the device plugged in, as the window shows them.
class DeviceListSource : public ListSource {
 public:
  DeviceListSource(DeviceStack &stack, const DeviceState &shown) : stack_(stack), shown_(shown) {}
  bool fromLibrary() const override { return false; }
  DeviceKey device() const override;
  QList<ClipRow> clipRows() const override { return shown_.clips; }
  QList<DiveRow> diveRows() const override { return shown_.dives; }
  std::optional<DiveRecord> dive(int row) const override;
  PlayableClip clip(int row) const override;
  QList<ClipRow> pins() const override;
  PlayableClip pinnedClip(int pin) const override;
  std::optional<DeviceLibrary::Item> fetchable(int pin) const override;

 private:
  // Every clip the device holds, listed or not, by index entry: a short one may still be
  // on the dive.
  QList<int32_t> pinEntries() const;
  std::optional<QString> savedClip(int32_t entry) const;

  DeviceStack &stack_;
  const DeviceState &shown_;
};

// What the library kept of one device.
class ShelfListSource : public ListSource {
 public:
  explicit ShelfListSource(LibraryShelf shelf) : shelf(std::move(shelf)) {}
  bool fromLibrary() const override { return true; }
  DeviceKey device() const override { return shelf.device; }
  QList<ClipRow> clipRows() const override { return shelf.clips; }
  QList<DiveRow> diveRows() const override { return shelf.diveRows; }
  std::optional<DiveRecord> dive(int row) const override;
  PlayableClip clip(int row) const override;
  QList<ClipRow> pins() const override { return shelf.clips; }
  PlayableClip pinnedClip(int pin) const override { return clip(pin); }
  std::optional<DeviceLibrary::Item> fetchable(int) const override { return std::nullopt; }

  const LibraryShelf shelf;
};
