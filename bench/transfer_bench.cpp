// Times whole transfers through the real session against the simulator (the qm482-sim
// program, so that this process holds only the host's side) over a pty: a listing of N
// dives, then one clip of 8 blocks (65 s of audio) in "vh" and "vr" mode, at the link
// rates given on the command line (bytes per second, 0 for unlimited). Each run is a
// process of its own, so that its CPU time and peak memory are its own.
//   transfer_bench [--dives N] [--blocks N] [--listing-only] [RATE...]
// default: 60 dives, a clip of 8 blocks (1044480 bytes), rates 11520 1000000 0
// At 960 B/s (a 9600-baud line) the clip alone takes over 18 minutes: --listing-only skips it.
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimeZone>
#include <QTimer>
#include <cstdio>

#include "Localization.h"
#include "LogTransfer.h"
#include "ProcessCost.h"
#include "SearchRange.h"
#include "SystemLog.h"
#include "TestSupport.h"
#include "VoiceTransfer.h"

namespace {

const QDate kToday(2024, 2, 15);

// A scenario file for qm482-sim: one clip, dives every third day back from kToday.
// What a run does: list this many dives, then fetch a clip of this many blocks.
struct Setup {
  int dives = 60;
  int blocks = 8;
  bool listingOnly = false;
};

QString WriteScenario(const QTemporaryDir &folder, const char *firmware, const Setup &setup,
                      int64_t rate) {
  const int dives = setup.dives;
  QJsonArray diveList;
  for (int i = 0; i < dives; ++i) {
    const QDateTime entry(kToday.addDays(-3 * (dives - i)), QTime(1, 0), QTimeZone::utc());
    diveList.append(QJsonObject{{"entry", entry.toString(Qt::ISODate)}, {"minutes", 45}});
  }
  const QJsonObject scenario{
      {"firmware", firmware},
      {"rate", QString::number(rate)},
      {"clips",
       QJsonArray{QJsonObject{{"start", QDateTime(kToday, QTime(9, 0)).toString(Qt::ISODate)},
                              {"first", 2},
                              {"last", 1 + setup.blocks}}}},
      {"dives", diveList}};
  const QString path = folder.filePath("scenario.json");
  QFile file(path);
  file.open(QIODevice::WriteOnly);
  file.write(QJsonDocument(scenario).toJson());
  return path;
}

struct Figures {
  double clipSeconds = -1, listingSeconds = -1;
  double clipCpu = 0, listingCpu = 0;
  int clipBytes = 0;
  long peakRssKb = 0;
};

// Plugs in, lists (timed), then downloads the clip (timed).
Figures Run(const char *firmware, int64_t rate, const Setup &setup) {
  const bool listingOnly = setup.listingOnly;
  Session session;
  VoiceTransfer voice(session);
  LogTransfer logs(session);
  logs.today = [] { return kToday; };
  logs.setSearchRange(kLongestSearchRangeMonths);
  QTemporaryDir home;
  session.context().downloadsFolder = [&home] { return home.path(); };
  session.context().createFolders();
  QProcess device;
  device.start(QStringLiteral(QM482_SIM_PATH),
               {"--today", kToday.toString(Qt::ISODate), "--scenario",
                WriteScenario(home, firmware, setup, rate)});
  device.waitForReadyRead(10000);
  const QString port = QString::fromUtf8(device.readLine()).trimmed();
  session.state().deviceExist = 1;
  session.openSerialPort(port, 9600);

  Figures figures;
  QElapsedTimer clock;
  clock.start();
  qint64 listingStart = -1;
  double cpuAtListingStart = 0;
  while (clock.elapsed() < 3600000) {
    const int32_t status = session.state().phase;
    if (status == CONNECTED_IDLE && listingStart >= 0) break;
    if (status == TRY_TX_LOG_HISTORY) {  // this tick sends "lh"
      listingStart = clock.elapsed();
      cpuAtListingStart = CpuSeconds();
    }
    if (status != RX_VOICE_INDEX && status != RX_LOG_HISTORY) session.tick();
    WaitFor([] { return false; }, 5);
  }
  figures.listingSeconds = (clock.elapsed() - listingStart) / 1000.0;
  figures.listingCpu = CpuSeconds() - cpuAtListingStart;
  WaitFor([&] { return session.model().state().phase == DevicePhase::Idle; }, 5000);
  WaitFor([] { return false; }, 300);  // the answer to the closing "#detail"

  figures.peakRssKb = PeakRssKilobytes();
  if (listingOnly) {
    device.kill();
    device.waitForFinished();
    return figures;
  }
  clock.restart();
  const double cpuAtClipStart = CpuSeconds();
  std::optional<Outcome> outcome;
  voice.downloadClip(session.model().state().clips.value(0).number,
                     [&outcome](const Outcome &ended) { outcome = ended; });
  // Sleeps in the event loop as the program does, woken by the supervision timer and a
  // look every 0.1 s; polling here would count against the session's CPU time.
  QTimer look;
  look.start(100);
  while (!outcome && clock.elapsed() < 3600000)
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  figures.clipBytes = session.state().clipSize;
  figures.clipSeconds = clock.elapsed() / 1000.0;
  figures.clipCpu = CpuSeconds() - cpuAtClipStart;
  figures.peakRssKb = PeakRssKilobytes();
  device.kill();
  device.waitForFinished();
  return figures;
}

// One run, in this process: prints its row.
void RunOne(int64_t rate, const char *firmware, const Setup &setup) {
  const int dives = setup.dives;
  const bool listingOnly = setup.listingOnly;
  LogCapture quiet;
  const Figures f = Run(firmware, rate, setup);
  const double payload = f.clipBytes / f.clipSeconds;
  const double megabytes = f.clipBytes / 1e6;
  const double bound = rate > 0 ? dives * (4096.0 + 10) / double(rate) : 0;
  std::printf("%-9lld %-4s %9.2f %10.0f %7s %8.3f %9.2f %8.2f %8.3f %9ld\n",
              static_cast<long long>(rate), QByteArray(firmware) >= "1.175" ? "vh" : "vr",
              listingOnly ? 0.0 : f.clipSeconds, listingOnly ? 0.0 : payload,
              rate > 0 && !listingOnly
                  ? qPrintable(QString::number(100.0 * payload / double(rate), 'f', 1) + "%")
                  : "-",
              listingOnly ? 0.0 : f.clipCpu / megabytes, 1000 * f.listingSeconds / dives,
              1000 * bound / dives, 1000 * f.listingCpu / dives, f.peakRssKb);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char **argv) {
  QCoreApplication app(argc, argv);
  InstallStringTables(QLocale(QLocale::English));
  const QStringList arguments = app.arguments().mid(1);
  // A run in this process: --one RATE FIRMWARE DIVES BLOCKS listing-only|clip
  if (arguments.value(0) == "--one") {
    const Setup setup{arguments.value(3).toInt(), arguments.value(4).toInt(),
                      arguments.value(5) == "listing-only"};
    RunOne(arguments.value(1).toLongLong(), qPrintable(arguments.value(2)), setup);
    return 0;
  }
  QList<int64_t> rates;
  Setup setup;
  for (int i = 0; i < arguments.size(); ++i) {
    if (arguments[i] == "--listing-only")
      setup.listingOnly = true;
    else if (arguments[i] == "--dives")
      setup.dives = arguments.value(++i).toInt();
    else if (arguments[i] == "--blocks")
      setup.blocks = arguments.value(++i).toInt();
    else
      rates << arguments[i].toLongLong();
  }
  if (rates.isEmpty()) rates = {11520, 1000000, 0};
  std::printf("%d dives listed, then one clip of %d blocks (%d bytes)\n", setup.dives, setup.blocks,
              setup.blocks * 130560);
  std::printf("%-9s %-4s %9s %10s %7s %8s %9s %8s %8s %9s\n", "rate B/s", "mode", "clip s",
              "payload/s", "effic.", "cpu s/MB", "ms/dive", "bound", "cpu ms", "peak RSS kB");
  std::fflush(stdout);
  for (int64_t rate : rates) {
    for (const char *firmware : {"1.180", "1.170"}) {
      if (setup.listingOnly && QByteArray(firmware) != "1.180") continue;
      QProcess one;
      one.setProcessChannelMode(QProcess::ForwardedChannels);
      one.start(app.applicationFilePath(),
                {"--one", QString::number(rate), firmware, QString::number(setup.dives),
                 QString::number(setup.blocks), setup.listingOnly ? "listing-only" : "clip"});
      one.waitForFinished(-1);
    }
  }
  return 0;
}
