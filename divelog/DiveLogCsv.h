#pragma once

#include <QByteArray>
#include <QString>

#include "DiveRecord.h"
#include "SaveResult.h"

class QIODevice;

// Writes the dive as CSV text to out: the summary lines, the warning and information
// flags, body nitrogen, then one line per profile sample; lines end in a single line feed.
// A dive whose page ran out in its profile ends after the last sample read, with
// "exception:..." logged where the next line would have been. Returns false, logged the
// same way, when out refuses a write (errno is left as the failing write set it) or when
// the page held no summary.
bool WriteDiveLogCsv(QIODevice &out, const DiveRecord &dive);

// Saves the dive as the CSV file at path, committed whole or not at all: an older file
// there stays as it was until the new one replaces it. A dive whose profile runs past its
// page is saved as far as the page goes.
SaveResult DiveLogCsvSave(const QString &path, const DiveRecord &dive);
