#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <optional>

#include "VoiceIndex.h"

// "<folder>/2023-04-05_13-07_2_voice.wav" for a clip's index entry: its start date and
// time and its length in minutes. None for an entry shorter than 21 characters. Two clips
// of the same minute and length share a name; the later download replaces the earlier.
std::optional<QString> MakeVoiceWaveFileName(const QString &entry, const QString &voiceFolder,
                                             VoiceBlockRing ring);

// The 44-byte header of a WAV file of 16-bit mono PCM at 8000 Hz holding audioLength
// bytes; both length fields are cut to 32 bits.
QByteArray WaveHeader(uint64_t audioLength);

// Writes the clip received into binaryFilename as the WAV file saveWaveFilename (replaced
// if present), the device's bytes unchanged after the header, and removes binaryFilename.
// A failure is logged and leaves the received clip in place, so nothing the device sent is
// lost. Returns true when the WAV file was written whole.
bool Bin2wav8k(const QString &binaryFilename, const QString &saveWaveFilename);
