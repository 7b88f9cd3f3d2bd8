#include "WavePcm.h"

#include <QIODevice>
#include <QtEndian>

namespace {

constexpr qint64 kChunkHeader = 8;
constexpr qint64 kFormatSize = 16;  // the PCM part of a format chunk
constexpr qint64 kReadStep = 64 * 1024;

// Exactly n bytes from in, or fewer when it ends (or fails) first.
QByteArray ReadUpTo(QIODevice &in, qint64 n) {
  QByteArray bytes;
  while (bytes.size() < n) {
    // A length in a header is never trusted for an allocation: the bytes come in steps.
    const QByteArray step = in.read(qMin(kReadStep, n - bytes.size()));
    if (step.isEmpty()) break;
    bytes += step;
  }
  return bytes;
}

bool Skip(QIODevice &in, qint64 n) {
  return in.skip(n) == n;
}

WavePcm Failed(WaveError error) {
  WavePcm wave;
  wave.error = error;
  return wave;
}

}  // namespace

qint64 WavePcm::durationMs() const {
  const qint64 bytesPerSecond = qint64(sampleRate) * bytesPerFrame();
  return bytesPerSecond > 0 ? pcm.size() * 1000 / bytesPerSecond : 0;
}

WavePcm ReadWavePcm(QIODevice &in) {
  if (!in.isReadable()) return Failed(WaveError::Unreadable);
  const QByteArray riff = ReadUpTo(in, 12);
  if (riff.size() < 12 || !riff.startsWith("RIFF") || riff.mid(8, 4) != "WAVE") {
    return Failed(WaveError::NotWave);
  }

  WavePcm wave;
  bool haveFormat = false;
  for (;;) {
    const QByteArray header = ReadUpTo(in, kChunkHeader);
    if (header.size() < kChunkHeader) return Failed(WaveError::NotWave);  // no data chunk
    const qint64 size = qFromLittleEndian<quint32>(header.constData() + 4);
    const QByteArray id = header.left(4);

    if (id == "fmt ") {
      if (size < kFormatSize) return Failed(WaveError::NotWave);
      const QByteArray format = ReadUpTo(in, kFormatSize);
      if (format.size() < kFormatSize) return Failed(WaveError::NotWave);
      const char *f = format.constData();
      const quint16 tag = qFromLittleEndian<quint16>(f);
      wave.channels = qFromLittleEndian<quint16>(f + 2);
      wave.sampleRate = static_cast<int>(qMin<quint32>(qFromLittleEndian<quint32>(f + 4), 1 << 30));
      wave.bitsPerSample = qFromLittleEndian<quint16>(f + 14);
      const bool monoOrStereo = wave.channels == 1 || wave.channels == 2;
      if (tag != 1 || wave.bitsPerSample != 16 || !monoOrStereo || wave.sampleRate == 0) {
        return Failed(WaveError::NotPcm16);
      }
      // The rest of the chunk and its pad byte.
      if (!Skip(in, size - kFormatSize + (size & 1))) return Failed(WaveError::NotWave);
      haveFormat = true;
    } else if (id == "data") {
      if (!haveFormat) return Failed(WaveError::NotWave);
      wave.pcm = ReadUpTo(in, size);
      wave.truncated = wave.pcm.size() < size;
      wave.pcm.chop(wave.pcm.size() % wave.bytesPerFrame());
      return wave;
    } else if (!Skip(in, size + (size & 1))) {
      return Failed(WaveError::NotWave);
    }
  }
}
