#pragma once

#include <QDate>
#include <QString>

// What "export" was asked for.
struct CliExportRequest {
  QString file;    // FILE.uddf
  QString output;  // in place of the Downloads folder (where the clips are); empty for it
  QDate since;     // null: every date
  QString serial;  // empty: every device
};

// Writes the library's dives as a UDDF logbook; no device is needed. Says what it wrote
// on stdout, or why not on stderr, and returns the exit status: 0 written, 2 no such
// device in the library, 6 the file (or the library) cannot be written.
int RunExport(const CliExportRequest &request);
