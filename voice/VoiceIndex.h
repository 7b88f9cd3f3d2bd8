#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <array>
#include <cstdint>
#include <optional>

// The device keeps clips in a ring of fixed-size blocks of 16-bit audio at 8 kHz.
inline constexpr int32_t kVoiceBlockBytes = 130560;  // 65280 samples, 8.16 s
inline constexpr double kVoiceBlockSeconds = 8.16;
inline constexpr int32_t kMinimumListedClipBytes = 960000;  // one minute of audio
// Blocks 1000 to 1023 sit inside the ring but hold no audio; a clip that spans them is
// 24 blocks shorter than its block numbers say.
inline constexpr int32_t kVoiceHoleFirstBlock = 1000;
inline constexpr int32_t kVoiceHoleEndBlock = 1024;
inline constexpr int32_t kVoiceHoleCorrection = -23 * kVoiceBlockBytes;
// An index entry, e.g. "230405-130722_002-00F", is read by character position.
inline constexpr qsizetype kVoiceEntryLength = 21;

// First and last block of the device's ring, as the last valid index header gave them.
struct VoiceBlockRing {
  int32_t first = 2;
  int32_t last = 1959;
};

// Clip size in bytes from the entry's block range; 0 when the entry does not split into
// date, time, start and end. Wraps around the ring and leaves out the hole.
int32_t GetVoiceDataSize(const QString &entry, VoiceBlockRing ring);

// Recording date as yyyymmdd; 0 when the entry does not split into four pieces.
int32_t GetVoiceDataDate(const QString &entry);

// When the clip was recorded, on the device's clock: "230405-130722_..." is 2023-04-05
// 13:07:22. Invalid when the entry does not hold a date and time.
QDateTime VoiceRecordingTime(const QString &entry);

// Whole minutes as the device's list shows them: a part minute of more than six seconds
// counts as one.
int ListedMinutes(double seconds);

// Playing time in whole minutes as the list and the file name show it: the block count
// by position, corrected for the ring wrap but not for the hole, at 8.16 s a block,
// plus 0.9 and truncated. The entry must be at least kVoiceEntryLength long.
int VoiceMinutes(const QString &entry, VoiceBlockRing ring);

// The list line "2023/04/05 13:07 2min", or none for an entry shorter than 21 characters.
std::optional<QString> VoiceListRow(const QString &entry, VoiceBlockRing ring);

// The voice list's rows: each shown clip's line and its position in the index (1-based,
// as element 0 is the header); and what the list leaves out, for the diver to know.
struct VoiceList {
  QStringList lines;
  QList<int32_t> numbers;
  int held = 0;      // the clips the device holds
  int tooShort = 0;  // in the range, but under a minute: hidden by their size
};

// The clips worth listing, in the device's order: at least a minute long and recorded on
// or after searchDate (yyyymmdd). The header and whatever follows the last comma are not
// entries. Each skipped entry is logged with the reason.
VoiceList BuildVoiceList(const QStringList &index, int32_t searchDate, VoiceBlockRing ring);

// What the last complete "vi" reply left behind.
struct VoiceIndexState {
  // The reply's comma-separated fields: header, entries, then whatever follows the last
  // comma. None after a reply that could not be read.
  std::optional<QStringList> entries;
  int32_t entryCount = 0;
  VoiceBlockRing ring;
};

// Applies one complete reply (the accumulated bytes) to the state. Returns true when the
// voice list is to be rebuilt from it; the state's index is cleared when the reply is
// undecodable, empty or has a header of fewer than three pieces.
bool ApplyVoiceIndexReply(const QByteArray &reply, VoiceIndexState &state);

// Gathers the "vi" reply from the reads of the receive loop. The reply is complete when a
// read itself holds "\r\n": a line end split across two reads is not seen. A reply that
// would outgrow the 4096-byte buffer is dropped whole, up to its line end.
class VoiceIndexAccumulator {
 public:
  static constexpr size_t kCapacity = 4096;

  // Takes one read. Bytes after a zero byte in the read are stored as zeros. Returns the
  // complete reply when this read ends it.
  std::optional<QByteArray> feed(const char *chunk, size_t length);

  size_t fill() const { return fill_; }

 private:
  std::array<char, kCapacity> buffer_{};
  size_t fill_ = 0;
  bool dropping_ = false;
};
