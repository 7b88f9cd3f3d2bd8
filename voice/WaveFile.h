#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <functional>
#include <optional>

#include "SaveResult.h"
#include "VoiceIndex.h"

class QIODevice;

// path itself when takenByAnother says it is free (or holds this same clip); otherwise the
// first of "..._voice-2.wav", "..._voice-3.wav", ... that is: a clip never replaces a
// different recording that happens to start in the same minute.
QString DistinctWaveFileName(const QString &path,
                             const std::function<bool(const QString &)> &takenByAnother);

// "<folder>/2023-04-05_13-07_2_voice.wav" for a clip's index entry: its start date and
// time and its length in minutes. None for an entry shorter than 21 characters. Two clips
// of the same minute and length share a name (DistinctWaveFileName tells them apart).
std::optional<QString> MakeVoiceWaveFileName(const QString &entry, const QString &voiceFolder,
                                             VoiceBlockRing ring);

// The 44-byte header of a WAV file of 16-bit mono PCM at 8000 Hz holding audioLength
// bytes; both length fields are cut to 32 bits.
QByteArray WaveHeader(uint64_t audioLength);

// Writes a WAV file to out: the header for the audio, then the device's bytes unchanged.
// Returns false, logged, when out refuses a write (errno is left as the failing write set
// it).
bool WriteWave(QIODevice &out, const QByteArray &audio);

// Saves the clip received into binaryFilename as the WAV file saveWaveFilename, committed
// whole or not at all: an older file of that name stays as it was until the new one
// replaces it. binaryFilename is removed once the WAV is committed, and kept on any
// failure, so nothing the device sent is lost.
SaveResult Bin2wav8k(const QString &binaryFilename, const QString &saveWaveFilename);
