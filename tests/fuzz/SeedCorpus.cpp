// Writes the fuzzers' seed corpora from the simulator's contents: real replies, records
// and pages, so that fuzzing starts from what the device sends.
//   fuzz_seeds DIR     -> DIR/voice_index, DIR/records, DIR/receive_dispatch, DIR/wave,
//                         DIR/uddf_export
#include <QDir>
#include <QFile>
#include <QtEndian>

#include "Protocol.h"
#include "SimContents.h"
#include "WaveFile.h"

namespace {

void Write(const QString &folder, const QString &name, const QByteArray &bytes) {
  QDir().mkpath(folder);
  QFile file(folder + "/" + name);
  if (file.open(QIODevice::WriteOnly)) file.write(bytes);
}

// A dispatch input: state, selector, flags, then 64-byte reads, each after its length - 1
// in two bytes.
QByteArray Dispatch(int state, int selector, const QByteArray &reply) {
  QByteArray input;
  input.append(char(state)).append(char(selector)).append(char(1));
  for (qsizetype at = 0; at < reply.size(); at += 64) {
    const QByteArray read = reply.mid(at, 64);
    input.append(char((read.size() - 1) & 0xFF)).append(char((read.size() - 1) >> 8)).append(read);
  }
  return input;
}

// The clip writer's WAV of 400 bytes of sound, with its format chunk's fields replaced: a
// diver's copy from another program, or a clip trimmed in an audio editor.
QByteArray Wave(quint16 tag, quint16 channels, quint32 rate, quint16 bits) {
  QByteArray audio(400, '\0');
  for (int i = 0; i < audio.size(); ++i) audio[i] = char(i * 37);
  QByteArray wave = WaveHeader(audio.size()) + audio;
  qToLittleEndian(tag, wave.data() + 20);
  qToLittleEndian(channels, wave.data() + 22);
  qToLittleEndian(rate, wave.data() + 24);
  qToLittleEndian(bits, wave.data() + 34);
  return wave;
}

void WriteWaves(const QString &folder) {
  const QByteArray ours = Wave(1, 1, 8000, 16);
  Write(folder, "ours", ours);
  Write(folder, "list_chunk", QByteArray(ours).insert(36, QByteArray("LIST\x05\0\0\0INFOx\0", 14)));
  Write(folder, "odd_chunk", QByteArray(ours).insert(36, QByteArray("junk\x03\0\0\0abc\0", 12)));
  Write(folder, "stereo_44k", Wave(1, 2, 44100, 16));
  Write(folder, "8bit", Wave(1, 1, 11025, 8));
  Write(folder, "24bit", Wave(1, 2, 48000, 24));
  Write(folder, "float", Wave(3, 1, 8000, 32));
  Write(folder, "header_cut", ours.left(30));
  Write(folder, "data_longer", ours.left(200));
  QByteArray extensible = QByteArray(ours).replace(16, 4, QByteArray("\x28\0\0\0", 4));
  extensible.insert(36, QByteArray("\x16\0\x10\0\x04\0\0\0\x01\0", 10) + QByteArray(14, '\x10'));
  extensible[20] = '\xfe', extensible[21] = '\xff';
  Write(folder, "extensible", extensible);
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 2) return 2;
  const QString root = QString::fromLocal8Bit(argv[1]);
  for (uint32_t seed = 1; seed <= 4; ++seed) {
    const sim::Contents contents = sim::GenerateContents(seed, QDate(2026, 11, 23));
    const QByteArray index = sim::VoiceIndexReply(contents);
    Write(root + "/voice_index", QStringLiteral("vi%1").arg(seed), char(63) + index);
    Write(root + "/records", QStringLiteral("history%1").arg(seed), sim::HistoryRecord(contents));
    Write(root + "/receive_dispatch", QStringLiteral("vi%1").arg(seed),
          Dispatch(RX_VOICE_INDEX, 1, index));
    Write(root + "/receive_dispatch", QStringLiteral("lh%1").arg(seed),
          Dispatch(RX_LOG_HISTORY, 3, sim::HistoryRecord(contents)));
    for (int i = 0; i < contents.dives.size(); i += 3) {
      const QByteArray page = sim::DivePage(contents.dives[i]);
      Write(root + "/records", QStringLiteral("page%1_%2").arg(seed).arg(i), page);
      Write(root + "/receive_dispatch", QStringLiteral("lp%1_%2").arg(seed).arg(i),
            Dispatch(RX_LOG_HISTORY, 4, page));
      // Clips at the entry, 10 minutes in, and 10 seconds before the dive.
      Write(root + "/uddf_export", QStringLiteral("page%1_%2").arg(seed).arg(i),
            page + QByteArray("\0\0\x58\x02\xf6\xff", 6));
    }
  }
  const QByteArray replies[][2] = {{"kind", "OK QM482CS\r\n"},
                                   {"detail", "OK 1.180 QM482 2023-10-01 JPN BAT85\r\n"},
                                   {"gser", "OK QM482 SN 28417305 00\r\n"},
                                   {"cdcwait", "cdcwait = 8\r\n"}};
  const int states[] = {TRY_CONNECT_RX_KIND, TRY_CONNECT_RX_DETAIL, TRY_CONNECT_RX_GSER,
                        TRY_RX_VOICE_WAIT};
  for (int i = 0; i < 4; ++i)
    Write(root + "/receive_dispatch", QString::fromLatin1(replies[i][0]),
          Dispatch(states[i], 0, replies[i][1]));
  WriteWaves(root + "/wave");
  return 0;
}
