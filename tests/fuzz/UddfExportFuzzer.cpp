// A dive page on its way to the logbook, whatever it holds: decoded, then written with the
// clips the rest of the input places around it. The document is always well-formed and
// valid against the published schema, and the page is either written as a dive or counted
// damaged and left out. Anything else aborts.
//   input: the page (4096 bytes, zeros after a short input), then 2 bytes per clip: its
//   moment in seconds from the dive's entry, signed.
#include <QBuffer>
#include <QByteArray>
#include <QtEndian>
#include <cstdlib>

#include "DiveRecord.h"
#include "FuzzSupport.h"
#include "UddfSchema.h"
#include "UddfWriter.h"

constexpr qsizetype kPageSize = 4096;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  StartFuzzing();
  const QByteArray input(reinterpret_cast<const char *>(data), qsizetype(size));
  QByteArray page = input.left(kPageSize);
  page.resize(kPageSize, '\0');

  UddfLogbook::Device device{"QM482", "SN 28417305 00", {}, {}};
  device.dives << UddfLogbook::Dive{7, DecodeDive(&page)};
  const QDateTime entry = device.dives[0].record.entry;
  for (qsizetype at = kPageSize; at + 2 <= input.size(); at += 2) {
    const qint16 seconds = qFromLittleEndian<qint16>(input.constData() + at);
    device.clips << UddfLogbook::Clip{QString::number(at), entry.addSecs(seconds),
                                      QStringLiteral("voice/%1.wav").arg(at)};
  }
  UddfLogbook logbook;
  logbook.generatorVersion = "0.0";
  logbook.devices << device;

  QByteArray document;
  document.reserve(1 << 20);  // a full page's dive is about 100 kB of XML
  QBuffer out(&document);
  out.open(QIODevice::WriteOnly);
  const UddfWritten written = WriteUddf(out, logbook);
  const bool damaged = device.dives[0].record.damage.has_value();
  if (!written.ok || written.dives != (damaged ? 0 : 1) ||
      written.damagedDives != (damaged ? 1 : 0) || !ValidUddf(document)) {
    std::abort();
  }
  return 0;
}
