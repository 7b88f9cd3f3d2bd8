#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

class QIODevice;

// Why the sound of a WAV file cannot be had.
enum class WaveError {
  None,
  Unreadable,  // the file could not be read
  NotWave,     // no RIFF/WAVE header, or no format chunk before a data chunk
  Unplayable,  // a WAV, in a format the sound output is not given (see WavePcm::format)
};

// How each sample is stored: the encodings a sound output takes as they are.
enum class WaveSamples { Unsigned8, Signed16, Signed32, Float32 };

// What a WAV file's format chunk says.
struct WaveFormat {
  quint16 tag = 0;  // 1 integer PCM, 3 floating point, anything else compressed
  int channels = 0;
  int sampleRate = 0;
  int bitsPerSample = 0;
};

// The sound of a WAV file: its format and its PCM bytes, whole frames only.
struct WavePcm {
  WaveError error = WaveError::None;
  WaveFormat format;  // as read, also when it is Unplayable
  WaveSamples samples = WaveSamples::Signed16;
  QByteArray pcm;
  // The data chunk ended before the length its header gives: pcm holds what was there.
  bool truncated = false;

  bool ok() const { return error == WaveError::None; }
  int bytesPerFrame() const { return format.channels * format.bitsPerSample / 8; }
  qint64 durationMs() const;
};

// Reads a WAV file from in, open for reading, up to the end of its data chunk. Plays as it
// is: integer PCM of 8, 16 or 32 bits or 32-bit floating point (also in the extensible
// format), 1 to 8 channels, 1 to 384 kHz. Chunks other than "fmt " and "data" are passed
// over. Any bytes give a value: a header that does not hold together is an error, and a
// data chunk cut short gives the sound up to the cut. Never reads past the data chunk.
WavePcm ReadWavePcm(QIODevice &in);

// A format in the diver's words: "24-bit PCM, stereo, 44.1 kHz".
QString DescribeWaveFormat(const WaveFormat &format);
