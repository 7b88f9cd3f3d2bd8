// The device's fixed-size records: the 32-byte history record and the 4096-byte dive page
// through the decoder and the CSV writer, whatever bytes they hold.
#include <QBuffer>
#include <QByteArray>

#include "DiveLogCsv.h"
#include "FuzzSupport.h"
#include "LogIndex.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  StartFuzzing();
  QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));

  QByteArray history = bytes.left(32);
  history.resize(32, '\0');
  DecodeLogHistory(history.constData());

  QByteArray page = bytes;
  page.resize(4096, '\0');
  QBuffer csv;
  csv.open(QIODevice::WriteOnly);
  const DiveRecord dive = DecodeDive(&page);
  WriteDiveLogCsv(csv, dive);
  DiveLogRowText(dive);
  DiveLogFileBaseName(dive);
  return 0;
}
