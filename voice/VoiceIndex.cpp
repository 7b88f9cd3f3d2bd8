#include "VoiceIndex.h"

#include <QTimeZone>

#include <cstring>

#include "SystemLog.h"
#include "TextValues.h"

namespace {

int32_t Hex32(QStringView text) {
  return static_cast<int32_t>(HexValue(text));
}

// Date, time, start block and end block.
QStringList EntryPieces(const QString &entry) {
  return SplitAtAnyOf(entry, u"-_");
}

}  // namespace

int32_t GetVoiceDataSize(const QString &entry, VoiceBlockRing ring) {
  const QStringList pieces = EntryPieces(entry);
  if (pieces.size() != 4) {
    SystemLog("GetVoiceDataSize:%s->%s", qUtf8Printable(entry),
              qUtf8Printable(DescribeList(pieces)));
    return 0;
  }
  const int32_t start = Hex32(pieces[2]);
  const int32_t end = Hex32(pieces[3]);
  const int64_t diff = Wrap32(int64_t{end} - start);
  int64_t size;
  if (end >= start) {
    const bool spansHole = start < kVoiceHoleFirstBlock && end >= kVoiceHoleEndBlock;
    size = diff * kVoiceBlockBytes + (spansHole ? kVoiceHoleCorrection : kVoiceBlockBytes);
  } else {
    // The clip wraps around the ring. The hole test differs from the one above; the
    // device's sizes follow it, so it is kept as it is.
    const bool spansHole = end >= kVoiceHoleEndBlock || start < kVoiceHoleFirstBlock;
    const int64_t blocks = Wrap32(diff + ring.last - ring.first);
    size = blocks * kVoiceBlockBytes + kVoiceBlockBytes +
           (spansHole ? kVoiceHoleCorrection : kVoiceBlockBytes);
  }
  const int32_t bytes = Wrap32(size);
  SystemLog("GetVoiceDataSize:%s:start=%d,end=%d,size=%d", qUtf8Printable(entry), start, end,
            bytes);
  return bytes;
}

int32_t GetVoiceDataDate(const QString &entry) {
  const QStringList pieces = EntryPieces(entry);
  if (pieces.size() != 4) {
    SystemLog("GetVoiceDataDate:%s->%s", qUtf8Printable(entry),
              qUtf8Printable(DescribeList(pieces)));
    return 0;
  }
  const int32_t date = Wrap32(int64_t{IntValue(pieces[0])} + 20000000);
  SystemLog("GetVoiceDataDate:%s:date=%d", qUtf8Printable(entry), date);
  return date;
}

QDateTime VoiceRecordingTime(const QString &entry) {
  const QDateTime time = QDateTime::fromString(QStringLiteral("20") + entry.left(13),
                                               QStringLiteral("yyyyMMdd-HHmmss"));
  return QDateTime(time.date(), time.time(), QTimeZone::utc());
}

namespace {

QStringView StartBlockText(const QString &entry) {
  return QStringView(entry).mid(14, 3);
}
QStringView EndBlockText(const QString &entry) {
  return QStringView(entry).mid(18, 3);
}

}  // namespace

int VoiceMinutes(const QString &entry, VoiceBlockRing ring) {
  int64_t blocks = int64_t{Hex32(EndBlockText(entry))} - Hex32(StartBlockText(entry)) + 1;
  // A wrapped clip counts one block fewer here than its size does; the shown minutes
  // have always been computed so.
  if (blocks < 0) blocks += int64_t{ring.last} - ring.first;
  return ListedMinutes(static_cast<double>(Wrap32(blocks)) * kVoiceBlockSeconds);
}

int ListedMinutes(double seconds) {
  return static_cast<int>(seconds / 60.0 + 0.9);
}

std::optional<QString> VoiceListRow(const QString &entry, VoiceBlockRing ring) {
  if (entry.size() < kVoiceEntryLength) return std::nullopt;
  const QStringView start = StartBlockText(entry);
  const QStringView end = EndBlockText(entry);
  SystemLog("voiseIndex2List:%s,%s,block=%d", qUtf8Printable(end.toString()),
            qUtf8Printable(start.toString()), Wrap32(int64_t{Hex32(end)} - Hex32(start) + 1));
  const QStringView e(entry);
  return QStringLiteral("20%1/%2/%3 %4:%5 %6min")
      .arg(e.mid(0, 2), e.mid(2, 2), e.mid(4, 2), e.mid(7, 2), e.mid(9, 2),
           QString::number(VoiceMinutes(entry, ring)));
}

VoiceList BuildVoiceList(const QStringList &index, int32_t searchDate, VoiceBlockRing ring) {
  VoiceList list;
  for (qsizetype i = 1; i < index.size() - 1; ++i) {
    const QString &entry = index[i];
    if (entry.size() < kVoiceEntryLength) {
      SystemLog("obj_1.length=%ld", long(entry.size()));
      continue;
    }
    ++list.held;
    const int32_t size = GetVoiceDataSize(entry, ring);
    const int32_t date = GetVoiceDataDate(entry);
    if (size < kMinimumListedClipBytes) {
      SystemLog("data_size=%d,%s", size, qUtf8Printable(entry));
      if (date >= searchDate) ++list.tooShort;
    } else if (date < searchDate) {
      SystemLog("data=%d,%s", date, qUtf8Printable(entry));
    } else if (const auto line = VoiceListRow(entry, ring)) {
      list.lines.append(*line);
      list.numbers.append(int32_t(i));
    }
  }
  return list;
}

bool ApplyVoiceIndexReply(const QByteArray &reply, VoiceIndexState &state) {
  const QString text = DecodeUtf8Strict(reply);
  if (text.isNull()) {
    SystemLog("voice_rx_buffer is nil.");
    state.entries.reset();
  } else {
    SystemLog("voice_rx_buffer=%s", qUtf8Printable(text));
    state.entries = text.split(u',');
  }
  if (!state.entries) {
    SystemLog("g_voice_index is nil");
    return false;
  }
  const QStringList &index = *state.entries;
  SystemLog("g_voice_index=%s,cnt=%ld", qUtf8Printable(DescribeList(index)), long(index.size()));
  if (index.isEmpty()) {
    state.entries.reset();
    return false;
  }

  const QStringList header = SplitAtAnyOf(index[0], u"()-");
  SystemLog("cmd=%s,cnt=%ld", qUtf8Printable(DescribeList(header)), long(header.size()));
  if (header.size() < 3) {
    SystemLog("cmd < 3...");
    state.entries.reset();
    return false;
  }
  state.entryCount = Hex32(header[0]);
  SystemLog("g_number_of_index=%d,(%s)", state.entryCount, qUtf8Printable(header[0]));
  VoiceBlockRing &ring = state.ring;
  if (state.entryCount < 1) {
    SystemLog("g_number_of_index=0:g_voice_data_block:%d->%d", ring.first, ring.last);
  } else {
    ring = {Hex32(header[1]), Hex32(header[2])};
    SystemLog("g_voice_data_block:%d(%s)->%d(%s)", ring.first, qUtf8Printable(header[1]), ring.last,
              qUtf8Printable(header[2]));
  }
  return true;
}

std::optional<QByteArray> VoiceIndexAccumulator::feed(const char *chunk, size_t length) {
  // Each read is taken as a C string: what follows a zero byte is stored as zeros and the
  // line end is looked for before it only.
  const size_t textLength = strnlen(chunk, length);
  SystemLog("g_receive_data_type_is_voice_record == eSERIAL_RX_VOICE_INDEX.%ld.:%.*s", long(length),
            int(textLength), chunk);
  const bool endsReply = memmem(chunk, textLength, "\r\n", 2) != nullptr;

  if (dropping_ || fill_ + length > kCapacity) {
    if (!dropping_) {
      SystemLog("voice index reply longer than %zu bytes, dropped", kCapacity);
    }
    dropping_ = !endsReply;
    fill_ = 0;
    return std::nullopt;
  }
  std::memcpy(buffer_.data() + fill_, chunk, textLength);
  std::memset(buffer_.data() + fill_ + textLength, 0, length - textLength);
  fill_ += length;
  if (!endsReply) return std::nullopt;

  SystemLog("g_receive_data_type_is_voice_record == eSERIAL_RX_VOICE_INDEX\u3000END. %ld.:%.*s",
            long(fill_), int(strnlen(buffer_.data(), fill_)), buffer_.data());
  QByteArray reply(buffer_.data(), static_cast<qsizetype>(fill_));
  fill_ = 0;
  return reply;
}
