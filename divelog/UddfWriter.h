#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <cstdint>

#include "DiveRecord.h"

class QIODevice;

// What a UDDF logbook holds: the diver's devices, each with its dives and its saved voice
// clips. Plain values; the writer decides nothing about where they came from.
struct UddfLogbook {
  struct Dive {
    int32_t number = 0;  // the device's zero-based history number
    DiveRecord record;
  };
  struct Clip {
    QString key;         // the library's key, unique per device
    QDateTime start;     // recording time on the device's clock
    QString objectName;  // the WAV file, relative to the UDDF file's folder
  };
  struct Device {
    QString model;
    QString serial;
    QList<Dive> dives;
    QList<Clip> clips;
  };
  QString generatorVersion;  // Mrvtq5dk's version; left out when empty
  QList<Device> devices;
};

// What the document holds.
struct UddfWritten {
  bool ok = false;       // false when out refused a write
  int dives = 0;         // dives written
  int clips = 0;         // voice clips linked from a dive
  int damagedDives = 0;  // left out: pages no device could have recorded
};

// Writes the logbook as one UDDF 3.2.3 document: the generator, the devices as the owner's
// dive computers, one repetition group per day (the date in Japan time, as the CSV shows
// it) with its dives in time order, and for each dive its number (history number + 1, as
// UDDF counts from 1), entry time in Japan time with its +09:00 offset, the samples as
// waypoints (metres, seconds, kelvin; SLOW, DECO, DEPTH and OUT as UDDF alarms) and the
// summary with its notes: the dive's warning and information flags, the sample warnings
// UDDF has no alarm for, and each voice clip recorded during the dive (SecondsIntoDive),
// its moment and a link to its entry in the media data. Only clips recorded during a
// written dive of their device are written. Texts are in the reader's language; numbers
// are written the C locale's way.
UddfWritten WriteUddf(QIODevice &out, const UddfLogbook &logbook);
