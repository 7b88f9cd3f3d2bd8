// A long run against the simulator with a fault in most sessions: many clip and dive
// downloads, every file written compared byte for byte with what the device holds, and
// every failure checked to have left no file behind. Rounds go on until both counts are
// reached. Prints the counts; exits 1 on any mismatch. Build with
// -DMRVTQ5DK_SANITIZER=address to check for leaks as well.
//   soak_run [DOWNLOADS]     default 200 clips and 200 dives
// In a round the dives come first: the bytes to spare after a clip that failed would be
// taken for the next page, which then never adds up to its 4096 bytes.
#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdio>
#include <random>

#include "DiveLogCsv.h"
#include "Localization.h"
#include "LogTransfer.h"
#include "RecordingWindow.h"
#include "SimulatedDevice.h"
#include "SystemLog.h"
#include "TestSupport.h"
#include "VoiceTransfer.h"
#include "WaveFile.h"

namespace {

const QDate kToday(2026, 11, 23);
constexpr int kPerRound = 10;
constexpr int kFailingClipsPerRound = 2;  // each takes three stalls of 5 s to fail

struct Counts {
  int clips = 0, clipsSaved = 0, clipsRefused = 0;
  int dives = 0, divesSaved = 0, divesRefused = 0;
  int mismatches = 0;
};

// What becomes of a clip under a fault.
enum class ClipOutcome { Saved, Fails, Either };

// The faults a round may carry, with what a diver would see.
struct Fault {
  const char *name;
  std::function<void(sim::Options &)> apply;
  ClipOutcome clips;
};

const Fault kFaults[] = {
    {"none", [](sim::Options &) {}, ClipOutcome::Saved},
    {"stall then resume", [](sim::Options &o) { o.stallAfterBytes = 50000, o.stallResumeMs = 700; },
     ClipOutcome::Saved},
    {"stall for good", [](sim::Options &o) { o.stallAfterBytes = 30000; }, ClipOutcome::Fails},
    // A clip counts as complete only when exactly its announced size has come: when the
    // bytes to spare arrive before the supervision tick sees it whole, it ends as a
    // stall, is retried, and fails; when after, it is saved (and they are stray).
    {"extra bytes", [](sim::Options &o) { o.extraBytes = 100; }, ClipOutcome::Either},
    // Pages in pieces. (A text reply in pieces is not one: the device always sends those
    // whole, and the handshake reads each from one read.)
    {"split pages",
     [](sim::Options &o) {
       o.splitReplies["lp"] = {100, 2000};
     },
     ClipOutcome::Saved},
    {"slow link", [](sim::Options &o) { o.bytesPerSecond = 400000, o.latencyMs = 20; },
     ClipOutcome::Saved},
};

QStringList FilesIn(const QString &folder) {
  return QDir(folder).entryList(QDir::Files, QDir::Name);
}

class Round {
 public:
  Round(uint32_t seed, const Fault &fault)
      : contents_(sim::GenerateContents(seed, kToday)),
        device_(contents_,
                [&] {
                  sim::Options options;
                  options.seed = seed;
                  fault.apply(options);
                  return options;
                }()),
        session_(window_, MakeQtSupervisionTimer()),
        voice_(session_),
        logs_(session_),
        fault_(fault) {
    window_.searchRange = "5 years";
    logs_.today = [] { return kToday; };
    logs_.SetIndexSearchDatatime();
    session_.context().downloadsFolder = [this] { return downloads_.path(); };
    session_.context().CreateFolder();
  }

  // Connects with quick session ticks, then ticks once a second as the window does: a
  // clip that stalled is fetched again on the tick after the device's "#cdcwait" answer.
  bool connect() {
    session_.state().deviceExist = 1;
    if (session_.openSerialPort(device_.slavePath(), 9600)) return false;
    return WaitFor(
               [&] {
                 const SessionState &state = session_.state();
                 if (state.g_serial_port_status == CONNECTED_IDLE &&
                     state.g_read_index_sequence == 0)
                   return true;
                 if (state.g_serial_port_status != RX_LOG_HISTORY) session_.timer2Call();
                 WaitFor([] { return false; }, 30);
                 return false;
               },
               60000) &&
           settle() && (startTicking(), true);
  }

  void clips(std::mt19937 &random, Counts &counts) {
    const int rows = int(session_.context().lists.items_voice_index_number.size());
    const StoragePaths paths = session_.state().paths.get();
    const int downloads = fault_.clips == ClipOutcome::Saved ? kPerRound : kFailingClipsPerRound;
    for (int i = 0; i < downloads && rows > 0; ++i) {
      const int row = int(random() % rows);
      const int number = session_.context().lists.items_voice_index_number[row];
      const sim::Clip &clip = contents_.clips[number - 1];
      QDir(paths.g_voice_folder_path).removeRecursively();
      session_.context().CreateFolder();
      window_.selectRow(IndexList::Voice, row);
      window_.clear();
      ++counts.clips;
      voice_.downloadClip(number, window_.outcomes());
      const bool ended = WaitFor(
          [&] {
            return window_.lastOutcome().has_value() && !session_.state().g_voice_download_active;
          },
          120000);
      const QStringList saved = FilesIn(paths.g_voice_folder_path);
      const bool complete = window_.lastOutcome() && window_.lastOutcome()->ok();
      if (complete && saved.size() == 1) {
        const QByteArray audio = sim::ClipAudio(clip, contents_.ringFirst, contents_.ringLast);
        const bool same = ReadFile(paths.g_voice_folder_path + "/" + saved[0]) ==
                          WaveHeader(uint64_t(audio.size())) + audio;
        counts.clipsSaved += same;
        mismatch(counts, !same || fault_.clips == ClipOutcome::Fails, "clip", number);
      } else {
        ++counts.clipsRefused;
        mismatch(counts, !ended || !saved.isEmpty() || fault_.clips == ClipOutcome::Saved, "clip",
                 number);
      }
      settle();
    }
  }

  void dives(std::mt19937 &random, Counts &counts) {
    const int rows = int(session_.context().lists.items_log_index_number.size());
    const StoragePaths paths = session_.state().paths.get();
    for (int i = 0; i < kPerRound && rows > 0; ++i) {
      const int row = int(random() % rows);
      const sim::Dive *dive = contents_.dive(session_.context().lists.items_log_index_number[row]);
      QDir(paths.g_log_folder_path).removeRecursively();
      session_.context().CreateFolder();
      window_.selectRow(IndexList::Log, row);
      window_.clear();
      ++counts.dives;
      logs_.downloadDive(session_.context().lists.items_log_index_number[row], window_.outcomes());
      const bool ended = WaitFor(
          [&] {
            return window_.lastOutcome() && window_.lastOutcome()->ok() &&
                   session_.state().g_serial_port_status == CONNECTED_IDLE;
          },
          30000);
      const QStringList saved = FilesIn(paths.g_log_folder_path);
      if (ended && saved.size() == 1 && dive) {
        QTemporaryDir expected;
        const QByteArray page = sim::DivePage(*dive);
        DiveLogCsvSave(expected.filePath("dive.csv"), &page);
        const bool same = ReadFile(paths.g_log_folder_path + "/" + saved[0]) ==
                          ReadFile(expected.filePath("dive.csv"));
        counts.divesSaved += same;
        mismatch(counts, !same, "dive", row);
      } else {
        ++counts.divesRefused;
        mismatch(counts, true, "dive", row);
      }
      settle();
    }
  }

 private:
  // The device's answer to the "#detail" that ends each transfer comes before the next.
  bool settle() {
    return WaitFor([] { return false; }, 150), true;
  }
  void startTicking() {
    QObject::connect(&tick_, &QTimer::timeout, [this] { session_.timer2Call(); });
    tick_.start(1000);
  }
  void mismatch(Counts &counts, bool wrong, const char *what, int which) {
    if (!wrong) return;
    ++counts.mismatches;
    std::printf("  MISMATCH: %s %d under \"%s\"\n", what, which, fault_.name);
  }

  sim::Contents contents_;
  QTemporaryDir downloads_;
  SimulatedDevice device_;
  RecordingWindow window_;
  Session session_;
  VoiceTransfer voice_;
  LogTransfer logs_;
  const Fault &fault_;
  QTimer tick_;
};

}  // namespace

int main(int argc, char **argv) {
  QCoreApplication app(argc, argv);
  InstallStringTables(QLocale(QLocale::English));
  const int target = argc > 1 ? std::max(1, std::atoi(argv[1])) : 200;
  LogCapture quiet;
  std::mt19937 random(20261123);
  Counts counts;
  for (int round = 0; counts.clips < target || counts.dives < target; ++round) {
    const Fault &fault = kFaults[round % std::size(kFaults)];
    Round session(uint32_t(round + 1), fault);
    if (!session.connect()) {
      std::printf("round %d (%s): the device did not connect\n", round + 1, fault.name);
      ++counts.mismatches;
      continue;
    }
    session.dives(random, counts);
    session.clips(random, counts);
    std::printf("round %2d %-18s clips %d/%d saved, dives %d/%d saved\n", round + 1, fault.name,
                counts.clipsSaved, counts.clips, counts.divesSaved, counts.dives);
    std::fflush(stdout);
    quiet.clear();
  }
  std::printf("clips: %d downloads, %d saved and identical, %d refused as the fault required\n",
              counts.clips, counts.clipsSaved, counts.clipsRefused);
  std::printf("dives: %d downloads, %d saved and identical, %d refused\n", counts.dives,
              counts.divesSaved, counts.divesRefused);
  std::printf("mismatches: %d\n", counts.mismatches);
  return counts.mismatches == 0 ? 0 : 1;
}
