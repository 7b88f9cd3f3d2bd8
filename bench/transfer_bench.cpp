// Times whole transfers through the real session against the simulator over a pty: one
// clip of 8 blocks (65 s of audio) in "vh" and "vr" mode, and a listing of 60 dives, at
// the link rates given on the command line (bytes per second, 0 for unlimited).
//   transfer_bench [--listing-only] [RATE...]        default: 1000000 0
// At 960 B/s (a 9600-baud line) the clip alone takes over 18 minutes: --listing-only skips it.
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimeZone>
#include <cstdio>

#include "Localization.h"
#include "LogTransfer.h"
#include "RecordingWindow.h"
#include "SimulatedDevice.h"
#include "SystemLog.h"
#include "VoiceTransfer.h"

namespace {

const QDate kToday(2024, 2, 15);

sim::Contents Device(const char *firmware) {
  sim::Contents contents = sim::GenerateContents(1, kToday);
  contents.firmware = firmware;
  contents.clips = {{QDateTime(kToday, QTime(9, 0), QTimeZone::utc()), 0x002, 0x009, 7}};
  contents.dives.clear();
  for (int i = 0; i < 60; ++i) {
    contents.dives.append(sim::GenerateDive(
        uint32_t(i), QDateTime(kToday.addDays(-3 * (60 - i)), QTime(1, 0), QTimeZone::utc()), 45,
        10, 1800, 260, 220));
  }
  contents.totalDives = 60;
  return contents;
}

struct Figures {
  double clipSeconds = -1, listingSeconds = -1;
  int clipBytes = 0;
};

// Plugs in, lists (timed), then downloads the clip (timed).
Figures Run(const char *firmware, int64_t rate, bool listingOnly) {
  RecordingWindow window;
  window.searchRange = "5 years";
  Session session(window);
  VoiceTransfer voice(session);
  LogTransfer logs(session);
  logs.today = [] { return kToday; };
  logs.SetIndexSearchDatatime();
  QTemporaryDir home;
  session.context().downloadsFolder = [&home] { return home.path(); };
  session.context().CreateFolder();
  sim::Options options;
  options.bytesPerSecond = rate;
  SimulatedDevice device(Device(firmware), options);
  session.state().deviceExist = 1;
  session.openSerialPort(device.slavePath(), 9600);

  Figures figures;
  QElapsedTimer clock;
  clock.start();
  qint64 listingStart = -1;
  while (clock.elapsed() < 3600000) {
    const int32_t status = session.state().g_serial_port_status;
    if (status == CONNECTED_IDLE && listingStart >= 0) break;
    if (status == TRY_TX_LOG_HISTORY) listingStart = clock.elapsed();  // this tick sends "lh"
    if (status != RX_VOICE_INDEX && status != RX_LOG_HISTORY) session.timer2Call();
    WaitFor([] { return false; }, 5);
  }
  figures.listingSeconds = (clock.elapsed() - listingStart) / 1000.0;
  WaitFor([&] { return window.called("EnableComboBoxLogIndex:1"); }, 5000);
  WaitFor([] { return false; }, 300);  // the answer to the closing "#detail"

  if (listingOnly) return figures;
  const QString done = QStringLiteral("messageBox:") + Localized("download_complete");
  clock.restart();
  voice.action_button_download_voice();
  WaitFor([&] { return window.calls().join(u'\n').contains(done); }, 3600000);
  figures.clipBytes = session.state().g_voice_data_size;
  figures.clipSeconds = clock.elapsed() / 1000.0;
  return figures;
}

}  // namespace

int main(int argc, char **argv) {
  QCoreApplication app(argc, argv);
  InstallStringTables(QLocale(QLocale::English));
  QList<int64_t> rates;
  bool listingOnly = false;
  for (int i = 1; i < argc; ++i) {
    if (QByteArray(argv[i]) == "--listing-only")
      listingOnly = true;
    else
      rates << QByteArray(argv[i]).toLongLong();
  }
  if (rates.isEmpty()) rates = {1000000, 0};
  LogCapture quiet;
  std::printf("%-10s %-5s %12s %10s %12s %11s %16s\n", "rate B/s", "mode", "clip bytes", "clip s",
              "payload B/s", "efficiency", "60-dive list s");
  for (int64_t rate : rates) {
    for (const char *firmware : {"1.180", "1.170"}) {
      if (listingOnly && QByteArray(firmware) != "1.180") continue;
      const Figures f = Run(firmware, rate, listingOnly);
      const double payload = f.clipBytes / f.clipSeconds;
      std::printf(
          "%-10lld %-5s %12d %10.2f %12.0f %10s %16.2f\n", static_cast<long long>(rate),
          QByteArray(firmware) >= "1.175" ? "vh" : "vr", f.clipBytes, f.clipSeconds, payload,
          rate > 0 ? qPrintable(QString::number(100.0 * payload / double(rate), 'f', 1) + "%")
                   : "-",
          f.listingSeconds);
      std::fflush(stdout);
    }
  }
  return 0;
}
