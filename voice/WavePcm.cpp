#include "WavePcm.h"

#include <QIODevice>
#include <QtEndian>
#include <optional>

#include "Localization.h"

namespace {

constexpr qint64 kChunkHeader = 8;
constexpr qint64 kFormatSize = 16;      // the PCM part of a format chunk
constexpr qint64 kExtensibleSize = 40;  // ... and the extensible format's part after it
constexpr quint16 kPcmTag = 1, kFloatTag = 3, kExtensibleTag = 0xFFFE;
constexpr int kMostChannels = 8;
constexpr int kLowestRate = 1000, kHighestRate = 384000;
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

// The encoding a sound output takes for a format, or none.
std::optional<WaveSamples> Playable(const WaveFormat &f) {
  if (f.channels < 1 || f.channels > kMostChannels) return std::nullopt;
  if (f.sampleRate < kLowestRate || f.sampleRate > kHighestRate) return std::nullopt;
  if (f.tag == kFloatTag) {
    if (f.bitsPerSample == 32) return WaveSamples::Float32;
  } else if (f.tag == kPcmTag) {
    if (f.bitsPerSample == 8) return WaveSamples::Unsigned8;
    if (f.bitsPerSample == 16) return WaveSamples::Signed16;
    if (f.bitsPerSample == 32) return WaveSamples::Signed32;
  }
  return std::nullopt;
}

// Reads the body of a format chunk of size bytes (its pad byte included) into wave.
WaveError ReadFormat(QIODevice &in, qint64 size, WavePcm &wave) {
  if (size < kFormatSize) return WaveError::NotWave;
  const qint64 known = size >= kExtensibleSize ? kExtensibleSize : kFormatSize;
  const QByteArray body = ReadUpTo(in, known);
  if (body.size() < known) return WaveError::NotWave;
  const char *f = body.constData();
  WaveFormat &format = wave.format;
  format.tag = qFromLittleEndian<quint16>(f);
  format.channels = qFromLittleEndian<quint16>(f + 2);
  format.sampleRate = int(qMin<quint32>(qFromLittleEndian<quint32>(f + 4), 1 << 30));
  format.bitsPerSample = qFromLittleEndian<quint16>(f + 14);
  // The extensible format names its encoding by the first two bytes of a sub-format.
  if (format.tag == kExtensibleTag && known == kExtensibleSize) {
    format.tag = qFromLittleEndian<quint16>(f + 24);
  }
  if (!Skip(in, size - known + (size & 1))) return WaveError::NotWave;
  const std::optional<WaveSamples> samples = Playable(format);
  if (!samples) return WaveError::Unplayable;
  wave.samples = *samples;
  return WaveError::None;
}

}  // namespace

qint64 WavePcm::durationMs() const {
  const qint64 bytesPerSecond = qint64(format.sampleRate) * bytesPerFrame();
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
      wave.error = ReadFormat(in, size, wave);
      if (wave.error == WaveError::NotWave) return Failed(WaveError::NotWave);
      if (wave.error == WaveError::Unplayable) return wave;  // its format, to be told
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

QString DescribeWaveFormat(const WaveFormat &format) {
  QString encoding;
  if (format.tag == kPcmTag) {
    encoding = Localized("wave_pcm").arg(format.bitsPerSample);
  } else if (format.tag == kFloatTag) {
    encoding = Localized("wave_float").arg(format.bitsPerSample);
  } else {
    encoding = Localized("wave_compressed").arg(format.tag, 4, 16, QChar('0'));
  }
  const QString channels = format.channels == 1   ? Localized("wave_mono")
                           : format.channels == 2 ? Localized("wave_stereo")
                                                  : Localized("wave_channels").arg(format.channels);
  // Units are the same in every language: "44.1 kHz", "8 kHz".
  const QString rate = QString::number(format.sampleRate / 1000.0, 'g', 7) + " kHz";
  return Localized("wave_format").arg(encoding, channels, rate);
}
