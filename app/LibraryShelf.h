#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QStringList>
#include <optional>

#include "DeviceState.h"
#include "DiveRecord.h"
#include "Library.h"

// What the library holds of one device, row by row as the window's lists show it when no
// device is plugged in: every dive whose page was read, and every clip whose WAV is still
// there to play, from the period's first day on. Rows are newest first, as the library
// gives them.
struct LibraryShelf {
  DeviceKey device;
  QList<DeviceKey> devices;  // every device in the library, most recently seen first
  QList<DiveRow> diveRows;   // as the device's list would give them, with their history numbers
  QList<DiveRecord> dives;   // decoded once from the pages the library kept
  QList<std::optional<QString>> diveFiles;  // the saved CSV, while it is there unchanged
  QList<ClipRow> clips;  // the recording time (on the device's clock) and the WAV's audio bytes
  QStringList clipFiles;
  int heldDives = 0;  // in the library, whatever the period
  int heldClips = 0;
};

// fromDay (yyyymmdd) is the period's first day, as the device's lists compare it: a dive's
// day in Japan time, a clip's recording day on the device's clock. Without a device, the one
// seen last; none when the library holds no device.
std::optional<LibraryShelf> ReadShelf(const Library &library,
                                      const std::optional<DeviceKey> &device, int32_t fromDay);

// How the device chooser names a device: "QM482 SN.28417305".
QString ShelfDeviceName(const DeviceKey &device);
