#pragma once

#include <QByteArray>
#include <QtGlobal>

class QIODevice;

// Why the sound of a WAV file cannot be had.
enum class WaveError {
  None,
  Unreadable,  // the file could not be read
  NotWave,     // no RIFF/WAVE header, or no format chunk before a data chunk
  NotPcm16,    // a WAV, but not 16-bit integer PCM in one or two channels at some rate
};

// The sound of a WAV file: its format and its PCM bytes, whole frames only.
struct WavePcm {
  WaveError error = WaveError::None;
  int sampleRate = 0;
  int channels = 0;
  int bitsPerSample = 0;
  QByteArray pcm;
  // The data chunk ended before the length its header gives: pcm holds what was there.
  bool truncated = false;

  bool ok() const { return error == WaveError::None; }
  int bytesPerFrame() const { return channels * bitsPerSample / 8; }
  qint64 durationMs() const;
};

// Reads a WAV file of 16-bit PCM from in, open for reading, up to the end of its data
// chunk. Chunks other than "fmt " and "data" are passed over. Any bytes give a value:
// a header that does not hold together is an error, and a data chunk cut short gives
// the sound up to the cut.
WavePcm ReadWavePcm(QIODevice &in);
