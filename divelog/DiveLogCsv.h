#pragma once

#include <QByteArray>
#include <QString>

// Writes one dive page as the CSV file at path, replacing any file there: the summary
// lines, the warning and information flags, body nitrogen, then one line per profile
// sample. Lines end in a single line feed. The profile size is taken as the device gives
// it; a page that runs out (a size past the profile area, a short page) or a disk that
// fills ends the file early with "exception:..." logged, keeping what was written. A
// missing page (nullptr) writes zeros. Returns true when the whole file was written.
bool DiveLogCsvSave(const QString &path, const QByteArray *g_dive_log_buffer);
