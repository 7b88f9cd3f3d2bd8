#pragma once

#include <QDateTime>
#include <QString>
#include <QVector>

#include "SimContents.h"

// How much a diver's library holds of one device: its dives, one every diveEveryHours back
// from yesterday, and a clip spoken during each of the newest clips dives.
struct DeviceHistory {
  QString serial;
  int dives = 0;
  int clips = 0;
  int minClipBlocks = 8;  // 130560 bytes each: 1 MB is 8 blocks, 8 MB 64
  int maxClipBlocks = 64;
};

// The dives and clips a device of that history holds, as the simulator would serve them:
// realistic profiles, clips with their tones.
sim::Contents HistoryContents(const DeviceHistory &history, int diveEveryHours = 20);

// What was written, for the table.
struct LibraryFootprint {
  int dives = 0;
  int clips = 0;
  qint64 diveBytes = 0;    // the CSV files
  qint64 clipBytes = 0;    // the WAV files
  qint64 firstLookMs = 0;  // the library's first look at every file, each read whole
};

// Saves every dive as its CSV file and every clip as its WAV file in the Downloads folder
// the platform names, through the program's own writers, and records them in the library at
// its default path as saved, the way a "save all new" would have left them. The devices are
// recorded in order, so the last one is the one the window shows first. The files are then
// dated three days back and looked at once through the library, as a diver's would have been.
LibraryFootprint WriteLibrary(const QVector<DeviceHistory> &devices);
