#pragma once

#include <QDate>
#include <QString>

#include "Library.h"
#include "SaveResult.h"

// What to export: the library's dives as one UDDF 3.2.3 logbook file.
struct LogbookExportRequest {
  QString file;  // the .uddf file to write (replaced whole, or left as it was)
  QString
      downloads;   // the Downloads folder whose Mrvtq5dk/voice holds the clips; empty: the user's
  QDate since;     // only dives on or after this day (Japan time, as the CSV dates them); null: all
  QString serial;  // only the device of this serial number; empty: every device in the library
  QList<int32_t> numbers;  // only the dives of these history numbers; empty: every dive
};

enum class ExportFailure {
  None,
  NoLibrary,      // the library could not be opened, not even as a new one
  UnknownDevice,  // no device of the requested serial number in the library
  CannotWrite,    // the file could not be written; nothing was left under its name
};

struct LogbookExportResult {
  ExportFailure failure = ExportFailure::None;
  QString sentence;      // for the user, in their language: what was written, or why not
  SaveResult save;       // how writing ended, for CannotWrite
  QString path;          // the file, as an absolute path
  int dives = 0;         // dives written
  int clips = 0;         // voice clips linked
  int damagedDives = 0;  // left out: pages no device could have recorded

  bool ok() const { return failure == ExportFailure::None; }
};

// Writes the library's dives (filtered by the request) as a UDDF logbook, decoded from the
// pages the library kept; no device is needed. A clip is linked when its WAV file is saved,
// as the library recorded it and unchanged, in the voice folder below the request's
// Downloads folder, and was recorded during an exported dive of its device; its path is
// written relative to the logbook's folder. A library without dives (or none passing the
// filters) gives a valid logbook without dives. The file is committed whole or not at all.
// Touches only the library given: any thread, with a library made on that thread.
LogbookExportResult ExportLogbook(const Library &library, const LogbookExportRequest &request);
