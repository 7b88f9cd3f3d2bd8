// How long the window's UI thread is kept busy with a big library. The real window runs
// offscreen in this process, with a 5 ms timer on its event loop noting how late each tick
// runs; for each scenario the table gives its wall time, the longest stall and the 99th
// percentile of the ticks' lateness.
//   ui_bench [--small] [--no-device]
// The library and Downloads folder are generated first in a throw-away home: two devices,
// 2,000 and 200 dives with their CSV files, 99 clips each of 1 to 8 MB (--small: 200 and 20
// dives, 20 clips of 1 MB). A simulated device of 1,100 dives and 99 clips of 1 MB (--small:
// 100 and 10) is then plugged in at 1 MB/s, listed and saved with "Save all new".
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdio>
#include <functional>
#include <memory>

#include "BigLibrary.h"
#include "Library.h"
#include "Localization.h"
#include "SimulatedDevice.h"
#include "StallProbe.h"
#include "StoragePaths.h"
#include "SystemLog.h"
#include "ViewController.h"

namespace {

constexpr int kTimeoutMs = 30 * 60 * 1000;  // a guard against a fault of ours only

// Everything the window writes goes below a home of its own, thrown away at the end. Set
// before the application starts, so that Qt's standard paths see it.
void UseHome(const QString &home) {
  const QByteArray path = home.toLocal8Bit();
  qputenv("HOME", path);
  qputenv("XDG_CONFIG_HOME", path + "/.config");
  qputenv("XDG_DATA_HOME", path + "/.local/share");
  qputenv("XDG_DOWNLOAD_DIR", path + "/Downloads");
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
}

// Runs the event loop, never sleeping past it, until done() holds; false after the guard.
bool RunUntil(const std::function<bool()> &done) {
  QElapsedTimer clock;
  clock.start();
  while (!done()) {
    if (clock.elapsed() > kTimeoutMs) return false;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
  }
  return true;
}

// The peak resident memory since the last reset, in kB (VmHWM); Linux only, else -1.
qint64 PeakRssKb() {
  QFile status(QStringLiteral("/proc/self/status"));
  if (!status.open(QIODevice::ReadOnly)) return -1;
  for (const QByteArray &line : status.readAll().split('\n'))
    if (line.startsWith("VmHWM:")) return line.mid(6).trimmed().split(' ').value(0).toLongLong();
  return -1;
}

// Lets the peak resident memory count again from what is resident now.
void ResetPeakRss() {
  QFile refs(QStringLiteral("/proc/self/clear_refs"));
  if (refs.open(QIODevice::WriteOnly)) refs.write("5");
}

qint64 FolderBytes(const QString &folder) {
  qint64 bytes = 0;
  QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
  while (it.hasNext()) bytes += it.nextFileInfo().size();
  return bytes;
}

// Closes each box the window opens, as a diver reading it would, and notes when it came.
class BoxAnswerer {
 public:
  explicit BoxAnswerer(const QElapsedTimer &clock) : clock_(clock) {
    QObject::connect(&timer_, &QTimer::timeout, [this] {
      if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
        seenAtMs_ = clock_.elapsed();
        ++boxes_;
        box->accept();
      }
    });
    timer_.start(2);
  }
  int boxes() const { return boxes_; }
  qint64 seenAtMs() const { return seenAtMs_; }

 private:
  const QElapsedTimer &clock_;
  QTimer timer_;
  int boxes_ = 0;
  qint64 seenAtMs_ = 0;
};

struct Row {
  QString scenario;
  double wallMs = 0;
  double longestMs = 0;
  double p99Ms = 0;
  int ticks = 0;
  QString own;  // the scenario's own target, met or missed, if it has one
};

const char *Verdict(bool met) {
  return met ? "met" : "**missed**";
}

void PrintTable(const QList<Row> &rows) {
  std::printf(
      "\n| scenario | wall ms | longest stall ms | p99 lateness ms | ticks | stall ≤ 50 ms "
      "| p99 < 16 ms | own target |\n|---|---|---|---|---|---|---|---|\n");
  for (const Row &row : rows) {
    std::printf("| %s | %.0f | %.1f | %.1f | %d | %s | %s | %s |\n", qPrintable(row.scenario),
                row.wallMs, row.longestMs, row.p99Ms, row.ticks, Verdict(row.longestMs <= 50),
                Verdict(row.p99Ms < 16), row.own.isEmpty() ? "-" : qPrintable(row.own));
  }
}

}  // namespace

int main(int argc, char **argv) {
  const QStringList arguments = [&] {
    QStringList list;
    for (int i = 1; i < argc; ++i) list.append(QString::fromLocal8Bit(argv[i]));
    return list;
  }();
  const bool small = arguments.contains(QStringLiteral("--small"));
  const bool withDevice = !arguments.contains(QStringLiteral("--no-device"));
  QTemporaryDir home;
  if (!home.isValid()) return 1;
  UseHome(home.path());
  QApplication app(argc, argv);
  InstallStringTables(QLocale(QLocale::English));
  SetSystemLogEcho(false);

  QElapsedTimer clock;
  clock.start();
  const int bigDives = small ? 200 : 2000;
  const int clips = small ? 20 : 99;
  const int maxBlocks = small ? 8 : 64;
  const LibraryFootprint written =
      WriteLibrary({{QStringLiteral("30000002"), bigDives / 10, clips, 8, maxBlocks},
                    {QStringLiteral("30000001"), bigDives, clips, 8, maxBlocks}});
  const qint64 libraryBytes = FolderBytes(QFileInfo(Library::DefaultPath()).path());
  std::printf(
      "generated in %.1f s: %d dives (%.1f MB of CSV), %d clips (%.1f MB of WAV), the "
      "library %.1f MB on disk; the library's first look at every file (each read whole for "
      "its hash, once) %.1f s\n",
      double(clock.elapsed()) / 1000, written.dives, double(written.diveBytes) / 1e6, written.clips,
      double(written.clipBytes) / 1e6, double(libraryBytes) / 1e6,
      double(written.firstLookMs) / 1000);

  StallProbe probe;
  BoxAnswerer answerer(clock);
  QList<Row> rows;
  // Runs action on the UI thread, then the event loop until done(); the probe's next tick
  // notes what the action kept it from.
  const auto measure = [&](
                           const QString &scenario, const std::function<void()> &action,
                           const std::function<bool()> &done = [] { return true; }) -> Row & {
    probe.restart();
    const qint64 started = clock.nsecsElapsed();
    action();
    if (!RunUntil(done)) qFatal("%s did not end", qPrintable(scenario));
    const double wallMs = double(clock.nsecsElapsed() - started) / 1e6;
    // A tick after the end, so that a stall at the very end is counted.
    const int ticks = probe.ticks();
    RunUntil([&] { return probe.ticks() > ticks; });
    rows.append(
        {scenario, wallMs, probe.longestStallMs(), probe.lateness99Ms(), probe.ticks(), {}});
    std::fprintf(stderr, "%s: %.0f ms\n", qPrintable(scenario), wallMs);
    return rows.last();
  };

  std::unique_ptr<ViewController> window;
  QTableView *dives = nullptr, *clipList = nullptr;
  Row &startUp = measure(
      QStringLiteral("start-up, library shown (no device)"),
      [&] {
        window = std::make_unique<ViewController>();
        window->start();
        window->resize(900, 700);
        window->show();
        window->afterShown();
      },
      // The library's lists come when the session's first tick finds no device.
      [&] {
        auto *list = window->findChild<QTableView *>(QStringLiteral("view_log_index"));
        return list->model()->rowCount() > 0;
      });
  dives = window->findChild<QTableView *>(QStringLiteral("view_log_index"));
  clipList = window->findChild<QTableView *>(QStringLiteral("view_voice_index"));
  startUp.own = QStringLiteral("under 1 s: %1; %2 dives, %3 clips listed")
                    .arg(Verdict(startUp.wallMs < 1000))
                    .arg(dives->model()->rowCount())
                    .arg(clipList->model()->rowCount());

  auto *range = window->findChild<QComboBox *>(QStringLiteral("comboBox_index_search_range"));
  // The library's lists are read away from the UI thread: each scenario ends when they show.
  const auto listedDives = [&](auto check) {
    return [&, check] { return check(dives->model()->rowCount()); };
  };
  const int monthDives = dives->model()->rowCount();
  Row &period = measure(
      QStringLiteral("period set to 5 years"),
      [&] {
        range->setCurrentIndex(range->count() - 1);
        QApplication::processEvents();
      },
      listedDives([monthDives](int listed) { return listed > monthDives; }));
  period.own = QStringLiteral("%1 dives, %2 clips listed")
                   .arg(dives->model()->rowCount())
                   .arg(clipList->model()->rowCount());

  const auto activate = [&] {
    window->activateWindow();
    QEvent change(QEvent::ActivationChange);
    QApplication::sendEvent(window.get(), &change);
    QApplication::processEvents();
  };
  const StoragePaths paths = StoragePathsIn(DownloadsFolder());
  const auto deleteOneOfEach = [&] {
    for (const QString &folder : {paths.logFolder, paths.voiceFolder}) {
      const QStringList files = QDir(folder).entryList(QDir::Files, QDir::Name);
      if (!files.isEmpty()) QFile::remove(folder + u'/' + files.first());
    }
  };
  measure(QStringLiteral("window activated, nothing changed"), activate).own =
      QStringLiteral("active: %1").arg(window->isActiveWindow() ? "yes" : "no");
  measure(QStringLiteral("window activated, a CSV and a WAV deleted"), [&] {
    deleteOneOfEach();
    activate();
  });

  auto *chooser = window->findChild<QComboBox *>(QStringLiteral("comboBox_library_device"));
  const auto choose = [&](int index) {
    chooser->setCurrentIndex(index);
    emit chooser->activated(index);
    QApplication::processEvents();
  };
  const int firstDeviceDives = dives->model()->rowCount();
  measure(
      QStringLiteral("\"Saved from\": the other device"), [&] { choose(1); },
      listedDives([firstDeviceDives](int listed) { return listed < firstDeviceDives; }))
      .own = QStringLiteral("%1 dives listed").arg(dives->model()->rowCount());
  measure(
      QStringLiteral("\"Saved from\": back"), [&] { choose(0); },
      listedDives([firstDeviceDives](int listed) { return listed == firstDeviceDives; }))
      .own = QStringLiteral("%1 dives listed").arg(dives->model()->rowCount());

  const auto pick = [&](QTableView *list, int row) {
    list->selectRow(row);
    window->grab();  // the profile, the summary and the player drawn
  };
  for (int row : {dives->model()->rowCount() / 2, 0}) {
    Row &picked =
        measure(QStringLiteral("dive picked, row %1").arg(row), [&] { pick(dives, row); });
    picked.own = QStringLiteral("drawn under 50 ms: %1").arg(Verdict(picked.wallMs < 50));
  }
  measure(QStringLiteral("clip picked, row %1").arg(clipList->model()->rowCount() / 2),
          [&] { pick(clipList, clipList->model()->rowCount() / 2); });

  const QString logbook = home.filePath(QStringLiteral("logbook.uddf"));
  window->chooseExportFile = [&](const QString &) { return logbook; };
  const qint64 rssBefore = PeakRssKb();
  ResetPeakRss();
  int boxes = answerer.boxes();
  qint64 exportStarted = 0;
  Row &exported = measure(
      QStringLiteral("export of every dive"),
      [&] {
        exportStarted = clock.elapsed();
        window->exportLogbookClicked();
      },
      [&] { return answerer.boxes() > boxes; });
  const qint64 exportMs = answerer.seenAtMs() - exportStarted;  // to the box, not past it
  const qint64 peakKb = PeakRssKb();
  exported.own = QStringLiteral(
                     "%1 s to the box: %2; peak RSS %3 MB (%4 MB before): %5; "
                     "file %6 MB")
                     .arg(double(exportMs) / 1000, 0, 'f', 2)
                     .arg(Verdict(exportMs < 5000))
                     .arg(double(peakKb) / 1000, 0, 'f', 1)
                     .arg(double(rssBefore) / 1000, 0, 'f', 1)
                     .arg(Verdict(peakKb < 100000))
                     .arg(double(QFileInfo(logbook).size()) / 1e6, 0, 'f', 1);

  std::unique_ptr<sim::SimulatedDevice> device;
  if (withDevice) {
    const int deviceDives = small ? 100 : 1100, deviceClips = small ? 10 : 99;
    sim::Options link;
    link.bytesPerSecond = 1000000;
    device = std::make_unique<sim::SimulatedDevice>(
        HistoryContents({QStringLiteral("28417305"), deviceDives, deviceClips, 8, 8}), link);
    if (device->slavePath().isEmpty()) qFatal("%s", qPrintable(device->error()));
    const SessionState &state = window->session().state();
    auto *saveAll = window->findChild<QPushButton *>(QStringLiteral("button_save_all_new"));
    measure(
        QStringLiteral("device plugged in, listed at 1 MB/s"),
        [&] {
          window->session().state().deviceExist = 1;
          if (window->session().openSerialPort(device->slavePath(), 9600))
            qFatal("the simulated device's port did not open");
        },
        [&] {
          return state.phase == CONNECTED_IDLE && state.indexSequence == 0 && dives->isEnabled() &&
                 dives->model()->rowCount() == deviceDives && saveAll->isEnabled();
        })
        .own = QStringLiteral("%1 dives listed (rows %2)")
                   .arg(deviceDives)
                   .arg(dives->model()->rowCount());
    boxes = answerer.boxes();
    measure(
        QStringLiteral("\"Save all new\" at 1 MB/s"), [&] { saveAll->click(); },
        [&] { return answerer.boxes() > boxes; });
    measure(QStringLiteral("window activated with the device, nothing changed"), activate);
    measure(QStringLiteral("window activated with the device, a CSV and a WAV deleted"), [&] {
      deleteOneOfEach();
      activate();
    });
  }

  PrintTable(rows);
  std::printf("\nlibrary %.1f MB on disk; Downloads/Mrvtq5dk %.1f MB\n",
              double(FolderBytes(QFileInfo(Library::DefaultPath()).path())) / 1e6,
              double(FolderBytes(QFileInfo(paths.voiceFolder).path())) / 1e6);
  device.reset();
  window.reset();
  return 0;
}
