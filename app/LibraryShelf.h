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
// there to play. Rows are newest first, as the library gives them.
struct LibraryShelf {
  DeviceKey device;
  QList<DiveRow> diveRows;  // as the device's list would give them, with their history numbers
  QList<DiveRecord> dives;  // decoded once from the pages the library kept
  QList<std::optional<QString>> diveFiles;  // the saved CSV, while it is there unchanged
  QList<ClipRow> clips;  // the recording time (on the device's clock) and the WAV's audio bytes
  QStringList clipFiles;
};

LibraryShelf ReadShelf(const Library &library, const DeviceKey &device);

// How the device chooser names a device: "QM482 SN.28417305".
QString ShelfDeviceName(const DeviceKey &device);
