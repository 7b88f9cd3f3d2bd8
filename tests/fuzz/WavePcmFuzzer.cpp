// A WAV file read back from the voice folder, whatever the diver put there: the sound the
// player would be handed is whole frames of bytes that are in the file, and a format it
// refuses can be told.
#include <QBuffer>
#include <QByteArray>
#include <cstdlib>

#include "FuzzSupport.h"
#include "WavePcm.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  StartFuzzing();
  QByteArray file(reinterpret_cast<const char *>(data), qsizetype(size));
  QBuffer in(&file);
  in.open(QIODevice::ReadOnly);
  const WavePcm wave = ReadWavePcm(in);
  if (wave.ok()) {
    if (wave.pcm.size() % wave.bytesPerFrame() != 0 || !file.contains(wave.pcm)) std::abort();
    static_cast<void>(wave.durationMs());
  } else if (wave.error == WaveError::Unplayable) {
    if (DescribeWaveFormat(wave.format).isEmpty()) std::abort();
  }
  return 0;
}
