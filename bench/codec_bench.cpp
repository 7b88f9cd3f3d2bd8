// Micro-benchmarks of the work done on every reply: the voice index of a full 4096-byte
// reply, the CSV of a full 504-sample dive page, the WAV of a 10 MB clip, and what the
// receive thread does with each chunk it reads.
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTimeZone>

#include "DiveLogCsv.h"
#include "SimContents.h"
#include "SystemLog.h"
#include "VoiceIndex.h"
#include "WaveFile.h"

namespace {

const QDateTime kStart(QDate(2024, 2, 15), QTime(9, 0), QTimeZone::utc());

// As many clips as fit a 4096-byte reply.
QByteArray FullVoiceIndexReply() {
  sim::Contents contents;
  for (int i = 0;; ++i) {
    contents.clips.append({kStart.addSecs(600 * i), 2 + 10 * i, 11 + 10 * i, uint32_t(i)});
    if (sim::VoiceIndexReply(contents).size() > 4096) {
      contents.clips.removeLast();
      return sim::VoiceIndexReply(contents);
    }
  }
}

void VoiceIndexOfAFullReply(benchmark::State &state) {
  const QByteArray reply = FullVoiceIndexReply();
  constexpr qsizetype kUsbPacket = 64;
  for (auto _ : state) {
    VoiceIndexAccumulator accumulator;
    std::optional<QByteArray> complete;
    for (qsizetype at = 0; at < reply.size(); at += kUsbPacket) {
      QByteArray chunk = reply.mid(at, kUsbPacket);
      complete = accumulator.feed(chunk.data(), size_t(chunk.size()));
    }
    VoiceIndexState index;
    ApplyVoiceIndexReply(*complete, index);
    benchmark::DoNotOptimize(BuildVoiceList(*index.entries, 20220101, {}));
  }
  state.SetBytesProcessed(state.iterations() * reply.size());
  state.counters["entries"] = double(reply.count(',') - 1);
}
BENCHMARK(VoiceIndexOfAFullReply);

void CsvOfAFullDivePage(benchmark::State &state) {
  // 84 minutes sampled every 10 s: the 504 samples that fill the profile area.
  const QByteArray page = sim::DivePage(sim::GenerateDive(3, kStart, 84, 10, 3120, 265, 190));
  QTemporaryDir folder;
  const QString path = folder.filePath("dive.csv");
  for (auto _ : state) benchmark::DoNotOptimize(DiveLogCsvSave(path, DecodeDive(&page)));
  state.SetBytesProcessed(state.iterations() * page.size());
  state.counters["csv bytes"] = double(QFile(path).size());
}
BENCHMARK(CsvOfAFullDivePage)->Unit(benchmark::kMicrosecond);

void WavOfA10MegabyteClip(benchmark::State &state) {
  QTemporaryDir folder;
  const QString binary = folder.filePath("voice.bin"), wave = folder.filePath("voice.wav");
  QByteArray clip(10 * 1024 * 1024, '\0');
  for (qsizetype i = 0; i < clip.size(); ++i) clip[i] = char(i * 7);
  for (auto _ : state) {
    state.PauseTiming();
    QFile file(binary);
    file.open(QIODevice::WriteOnly);
    file.write(clip);
    file.close();
    state.ResumeTiming();
    benchmark::DoNotOptimize(Bin2wav8k(binary, wave));
  }
  state.SetBytesProcessed(state.iterations() * clip.size());
}
BENCHMARK(WavOfA10MegabyteClip)->Unit(benchmark::kMillisecond);

// The receive thread logs one progress line for every chunk of a clip it takes in; with
// the append to the temporary file, that is its work per chunk.
void ClipChunkLogLineAndAppend(benchmark::State &state) {
  QTemporaryDir folder;
  QFile file(folder.filePath("voice.bin"));
  file.open(QIODevice::WriteOnly);
  const QByteArray chunk(int(state.range(0)), 'x');
  int32_t received = 0;
  for (auto _ : state) {
    file.write(chunk);
    received += int32_t(chunk.size());
    SystemLog("%08d/%08d : %08d", received, 1044480, received % 2040);
  }
  state.SetBytesProcessed(state.iterations() * chunk.size());
}
BENCHMARK(ClipChunkLogLineAndAppend)->Arg(64)->Arg(2040)->Arg(4096);

}  // namespace

int main(int argc, char **argv) {
  QCoreApplication app(argc, argv);
  SetSystemLogEcho(false);  // the system log only, as in a session that nobody watches
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
