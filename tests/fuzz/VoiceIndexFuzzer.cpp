// The voice index as the device sends it: reads of any length and content, gathered,
// parsed and listed, every entry sized and named.
#include <QByteArray>
#include <cstdlib>

#include "FuzzSupport.h"
#include "VoiceIndex.h"
#include "WaveFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  StartFuzzing();
  // The first byte picks the read size, as the USB link and the driver cut the reply.
  if (size == 0) return 0;
  const size_t readSize = 1 + data[0] % 200;
  VoiceIndexAccumulator accumulator;
  for (size_t at = 1; at < size; at += readSize) {
    QByteArray read(reinterpret_cast<const char *>(data + at),
                    qsizetype(std::min(readSize, size - at)));
    const std::optional<QByteArray> reply = accumulator.feed(read.data(), size_t(read.size()));
    if (!reply) continue;
    VoiceIndexState state;
    if (!ApplyVoiceIndexReply(*reply, state) || !state.entries) continue;
    BuildVoiceList(*state.entries, 20220101, state.ring);
    for (const QString &entry : *state.entries) {
      GetVoiceDataSize(entry, state.ring);
      VoiceListRow(entry, state.ring);
      // Whatever the entry holds, the file lands in the voice folder itself.
      const std::optional<QString> name =
          MakeVoiceWaveFileName(entry, QStringLiteral("/voice"), state.ring);
      if (name && (!name->startsWith(QStringLiteral("/voice/")) || name->mid(7).contains(u'/') ||
                   name->contains(QChar(0)))) {
        std::abort();
      }
    }
  }
  return 0;
}
