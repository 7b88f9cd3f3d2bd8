// Times "plug-in to everything saved" through the real session and library against the
// simulator (the qm482-sim program over a pty, as in transfer_bench), two ways, each in a
// process of its own so that its CPU time and peak memory are its own:
//   save all new   the listing, then the SaveAllNew job (dives from the listing's pages,
//                  then the clips one after another);
//   item by item   the listing, then each dive and each clip through the single download a
//                  window button starts (a dive fetched again with its own "lp"), each one
//                  started the moment the one before ended: a human reaction time of 0.
// Between them it prints the lower bound: every byte the save-all run put on the link, at
// the link rate, plus the session ticks the handshake and the listing wait for.
//   sync_bench [--dives N] [--clips N] [--blocks N] [--rate BYTES]   (BYTES above 0)
// default: 30 dives, 10 clips of 8 blocks (the shortest clip the list shows), 11520 B/s.
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimeZone>
#include <QTimer>
#include <cstdio>
#include <optional>

#include "DeviceLibrary.h"
#include "Localization.h"
#include "ProcessCost.h"
#include "SaveAllNew.h"
#include "SearchRange.h"
#include "SystemLog.h"

namespace {

const QDate kToday(2024, 2, 15);
constexpr int kBlockBytes = 130560;
constexpr int kTickMs = 1000;                // the session timer, as in the window
constexpr int kTimeoutMs = 3 * 3600 * 1000;  // a guard against a fault of ours only

struct Setup {
  int dives = 30;
  int clips = 10;
  int blocks = 8;  // a clip under a minute (960000 bytes) is not listed
  qint64 rate = 11520;
};

// A scenario file for qm482-sim: dives every third day and clips every day back from
// kToday, the clips side by side from the ring's first block.
QString WriteScenario(const QTemporaryDir &folder, const Setup &setup) {
  QJsonArray dives, clips;
  for (int i = 0; i < setup.dives; ++i) {
    const QDateTime entry(kToday.addDays(-3 * (setup.dives - i)), QTime(1, 0), QTimeZone::utc());
    dives.append(QJsonObject{{"entry", entry.toString(Qt::ISODate)}, {"minutes", 45}});
  }
  for (int i = 0; i < setup.clips; ++i) {
    const QDateTime start(kToday.addDays(-1 - i), QTime(9, 0));
    clips.append(QJsonObject{{"start", start.toString(Qt::ISODate)},
                             {"first", 2 + i * setup.blocks},
                             {"last", 1 + (i + 1) * setup.blocks}});
  }
  const QJsonObject scenario{
      {"rate", QString::number(setup.rate)}, {"clips", clips}, {"dives", dives}};
  const QString path = folder.filePath("scenario.json");
  QFile file(path);
  file.open(QIODevice::WriteOnly);
  file.write(QJsonDocument(scenario).toJson());
  return path;
}

// What the simulator has read and written so far, from the kernel's count of its read and
// write calls (Linux). Once it has printed its port, the pty is all it reads and writes.
struct Wire {
  qint64 toDevice = -1, fromDevice = -1;
};

Wire WireCount(qint64 pid) {
  QFile io(QStringLiteral("/proc/%1/io").arg(pid));
  Wire wire;
  if (!io.open(QIODevice::ReadOnly)) return wire;
  for (const QByteArray &line : io.readAll().split('\n')) {
    if (line.startsWith("rchar:")) wire.toDevice = line.mid(6).trimmed().toLongLong();
    if (line.startsWith("wchar:")) wire.fromDevice = line.mid(6).trimmed().toLongLong();
  }
  return wire;
}

// The states a session tick moves on; nothing else leaves them.
bool StepsOnTick(int32_t status) {
  switch (status) {
    case TRY_CONNECT_TX_KIND:
    case TRY_CONNECT_KIND_DONE:
    case TRY_CONNECT_TX_DETAIL:
    case TRY_CONNECT_DETAIL_DONE:
    case TRY_CONNECT_TX_GSER:
    case TRY_TX_VOICE_INDEX:
    case TRY_TX_LOG_HISTORY:
    case TRY_TX_VOICE_RETRY:
      return true;
    default:
      return false;
  }
}

// Runs the event loop, as the program does, until the value is there or the time runs out.
template <typename T>
void Await(const std::optional<T> &value) {
  QElapsedTimer clock;
  clock.start();
  QTimer look;  // wakes the loop to look at the clock
  look.start(100);
  while (!value && clock.elapsed() < kTimeoutMs)
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

// One run's figures; the child prints them on one line for the parent's table.
struct Figures {
  double seconds = -1;    // from the plug-in to the last item saved
  double listed = -1;     // from the plug-in to the end of the listing
  double divesDone = -1;  // from the plug-in to the end of the last dive
  double cpu = 0;
  long peakRssKb = 0;
  Wire wire;
  int ticks = 0;  // session ticks that stepped the handshake or the listing
};

// The whole host side on a fresh Downloads folder and library.
struct Host {
  Host() : voice(session), logs(session), deviceLibrary(session, voice, logs, library) {
    logs.today = [] { return kToday; };
    logs.setSearchRange(kLongestSearchRangeMonths);
    session.context().downloadsFolder = [this] { return home.path(); };
    session.context().createFolders();
  }
  int files(const char *folder, const char *pattern) const {
    const QDir saved(home.filePath(QStringLiteral("Mrvtq5dk/") + folder));
    return int(saved.entryList({QString::fromLatin1(pattern)}, QDir::Files).size());
  }
  SaveAllReport saveAll() {
    SaveAllNew job(session, deviceLibrary);
    job.setItemHandler([this](const DeviceLibrary::Item &item, const Outcome &) { ended(item); });
    std::optional<SaveAllReport> report;
    job.start([&report](const SaveAllReport &ended) { report = ended; });
    Await(report);
    return report.value_or(SaveAllReport{});
  }
  // Each item through the single download, the next one started when this one ended.
  int oneByOne() {
    int failed = 0;
    for (const DeviceLibrary::Item &item : deviceLibrary.listed()) {
      std::optional<Outcome> outcome;
      deviceLibrary.save(
          item, [&outcome](const Outcome &ended) { outcome = ended; }, DeviceLibrary::kOverTheWire);
      Await(outcome);
      ended(item);
      failed += !outcome || !outcome->ok();
    }
    return failed;
  }
  void ended(const DeviceLibrary::Item &item) {
    if (item.kind == ItemKind::Dive) divesDoneMs = sincePlugIn.elapsed();
  }

  QTemporaryDir home;
  Session session;
  VoiceTransfer voice;
  LogTransfer logs;
  Library library{home.filePath("library.sqlite")};
  DeviceLibrary deviceLibrary;
  QElapsedTimer sincePlugIn;
  qint64 divesDoneMs = -1;  // when the last dive ended
};

// Says on stderr whether the run saved every item: the figures of one that did not do not
// count.
void Verify(const char *way, Host &host, const Setup &setup, int failed) {
  const int clips = host.files("voice", "*.wav"), dives = host.files("log", "*.csv");
  const SaveAllReport again = host.saveAll();
  const bool nothingNew = again.saved.isEmpty() && again.failed.isEmpty() &&
                          again.alreadySaved == setup.dives + setup.clips;
  if (failed == 0 && clips == setup.clips && dives == setup.dives && nothingNew) {
    std::fprintf(stderr, "%s: %d clips and %d dives saved, a second save-all finds nothing new\n",
                 way, clips, dives);
    return;
  }
  std::fprintf(stderr,
               "%s: NOT EVERYTHING SAVED: %d failed, %d of %d clips and %d of %d dives on disk, a "
               "second save-all found %lld new\n",
               way, failed, clips, setup.clips, dives, setup.dives,
               static_cast<long long>(again.saved.size() + again.failed.size()));
}

// Plugs in (opens the port), lists, then saves everything the given way.
Figures Run(bool itemByItem, const Setup &setup) {
  Host host;
  QProcess simulator;
  simulator.start(QStringLiteral(QM482_SIM_PATH), {"--today", kToday.toString(Qt::ISODate),
                                                   "--scenario", WriteScenario(host.home, setup)});
  simulator.waitForReadyRead(10000);
  const QString port = QString::fromUtf8(simulator.readLine()).trimmed();
  const Wire before = WireCount(simulator.processId());

  Figures figures;
  std::optional<Outcome> listed;
  host.session.setConnectionHandler([&listed](const Outcome &outcome) { listed = outcome; });
  QTimer tick;  // started with the port, as the command line does
  QObject::connect(&tick, &QTimer::timeout, [&] {
    const int32_t status = host.session.state().phase;
    host.session.tick();
    figures.ticks += StepsOnTick(status) && host.session.state().phase != status;
  });
  const double cpuAtStart = CpuSeconds();
  host.sincePlugIn.start();
  host.session.state().deviceExist = 1;
  host.session.openSerialPort(port, 9600);
  tick.start(kTickMs);
  Await(listed);
  figures.listed = host.sincePlugIn.elapsed() / 1000.0;
  int failed = 0;
  if (!listed || !listed->ok()) {
    failed = setup.dives + setup.clips;
  } else if (itemByItem) {
    failed = host.oneByOne();
  } else {
    failed = int(host.saveAll().failed.size());
  }
  figures.seconds = host.sincePlugIn.elapsed() / 1000.0;
  figures.divesDone = host.divesDoneMs / 1000.0;
  figures.cpu = CpuSeconds() - cpuAtStart;
  figures.peakRssKb = PeakRssKilobytes();
  Verify(itemByItem ? "item by item" : "save all new", host, setup, failed);
  const Wire after = WireCount(simulator.processId());
  if (before.toDevice >= 0 && after.toDevice >= 0) {
    figures.wire = {after.toDevice - before.toDevice, after.fromDevice - before.fromDevice};
  }
  simulator.kill();
  simulator.waitForFinished();
  return figures;
}

// Runs one way in a child process of this program and reads its figures.
Figures RunChild(const QString &way, const Setup &setup) {
  QProcess child;
  child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  child.start(QCoreApplication::applicationFilePath(),
              {"--one", way, QString::number(setup.dives), QString::number(setup.clips),
               QString::number(setup.blocks), QString::number(setup.rate)});
  child.waitForFinished(-1);
  const QList<QByteArray> v = child.readAllStandardOutput().simplified().split(' ');
  if (v.size() < 8) return Figures{};
  return Figures{v[0].toDouble(), v[1].toDouble(), v[2].toDouble(),
                 v[3].toDouble(), v[4].toLong(),   Wire{v[5].toLongLong(), v[6].toLongLong()},
                 v[7].toInt()};
}

// The total, then its parts: the listing, the dives after it, the clips after them.
void PrintRow(const char *way, double bound, const Figures &f) {
  std::printf("%-13s %8.2f %8.2f %8.2f %8.2f %8.1f%% %7.2f %9ld %10lld %11lld\n", way, f.seconds,
              f.listed, f.divesDone - f.listed, f.seconds - f.divesDone,
              100.0 * (f.seconds - bound) / bound, f.cpu, f.peakRssKb,
              static_cast<long long>(f.wire.toDevice), static_cast<long long>(f.wire.fromDevice));
}

void PrintTable(const Setup &setup) {
  std::printf(
      "%d dives and %d clips of %d blocks (%d bytes each) at %lld B/s; "
      "human reaction time 0\n",
      setup.dives, setup.clips, setup.blocks, setup.blocks * kBlockBytes,
      static_cast<long long>(setup.rate));
  std::printf("%-13s %8s %8s %8s %8s %9s %7s %9s %10s %11s\n", "way", "total s", "listing", "dives",
              "clips", "vs bound", "CPU s", "peak RSS kB", "B to dev.", "B from dev.");
  std::fflush(stdout);
  const Figures all = RunChild("save-all", setup);
  const Figures one = RunChild("item-by-item", setup);
  if (all.wire.toDevice < 0 || all.ticks == 0) {
    std::printf("save all new did not run through, or its bytes could not be counted\n");
    return;
  }
  const qint64 bytes = all.wire.toDevice + all.wire.fromDevice;
  const double bound = all.ticks * kTickMs / 1000.0 + double(bytes) / double(setup.rate);
  PrintRow("save all new", bound, all);
  std::printf("%-13s %8.2f   (%d ticks + %lld B / %lld B/s)\n", "lower bound", bound, all.ticks,
              static_cast<long long>(bytes), static_cast<long long>(setup.rate));
  PrintRow("item by item", bound, one);
  std::printf("item by item takes %.2f s (%.1f%%) longer than save all new\n",
              one.seconds - all.seconds, 100.0 * (one.seconds - all.seconds) / all.seconds);
}

}  // namespace

int main(int argc, char **argv) {
  QCoreApplication app(argc, argv);
  InstallStringTables(QLocale(QLocale::English));
  SetSystemLogEcho(false);  // as the command line: every line to the system log only
  const QStringList arguments = app.arguments().mid(1);
  // A run in this process: --one save-all|item-by-item DIVES CLIPS BLOCKS RATE
  if (arguments.value(0) == "--one") {
    const Setup setup{arguments.value(2).toInt(), arguments.value(3).toInt(),
                      arguments.value(4).toInt(), arguments.value(5).toLongLong()};
    const Figures f = Run(arguments.value(1) == "item-by-item", setup);
    std::printf("%.3f %.3f %.3f %.3f %ld %lld %lld %d\n", f.seconds, f.listed, f.divesDone, f.cpu,
                f.peakRssKb, static_cast<long long>(f.wire.toDevice),
                static_cast<long long>(f.wire.fromDevice), f.ticks);
    return 0;
  }
  Setup setup;
  for (int i = 0; i + 1 < arguments.size(); i += 2) {
    const QString &name = arguments[i];
    const QString value = arguments[i + 1];
    if (name == "--dives") setup.dives = value.toInt();
    if (name == "--clips") setup.clips = value.toInt();
    if (name == "--blocks") setup.blocks = value.toInt();
    if (name == "--rate") setup.rate = value.toLongLong();
  }
  if (setup.rate <= 0) {
    std::fprintf(stderr, "sync_bench: --rate needs a link rate in bytes per second\n");
    return 2;
  }
  PrintTable(setup);
  return 0;
}
