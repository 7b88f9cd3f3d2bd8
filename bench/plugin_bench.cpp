// The built window on a virtual USB bus: how long from plug-in to both lists filled, split
// as the device sees it (discovery and the first tick, handshake, listing), and what the
// window costs while it waits, with no device and with one connected and idle.
//   plugin_bench [--runs N] [--idle SECONDS]          default: 5 runs, 60 s
// Runs itself under umockdev-wrapper (Debian package umockdev) when it is not already.
#include <unistd.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <vector>

#include "AppProcess.h"
#include "SimulatedDevice.h"
#include "TestSupport.h"
#include "VirtualUsb.h"

namespace {

int64_t SteadyMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

// User and system CPU seconds of a process so far.
double CpuSeconds(qint64 pid) {
  QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
  if (!stat.open(QIODevice::ReadOnly)) return 0;
  const QList<QByteArray> fields = stat.readAll().split(')').value(1).trimmed().split(' ');
  return (fields.value(11).toDouble() + fields.value(12).toDouble()) / sysconf(_SC_CLK_TCK);
}

void Pause(int ms) {
  QElapsedTimer clock;
  clock.start();
  while (clock.elapsed() < ms) {
    QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    QThread::msleep(50);
  }
}

// The built window with a home of its own, ready for the device.
struct Window {
  Window() { app.waitUntilReady(); }
  qint64 pid() const { return app.pid(); }
  TemporaryHome home;
  AppProcess app{QStringLiteral(MRVTQ5DK_APP_PATH)};
};

struct Timing {
  int64_t discovery, handshake, listing;
};

// Plugs the simulator in after the window has started; waits for the listing's end.
Timing PlugIn(VirtualUsb &usb, const QString &port, std::unique_ptr<sim::SimulatedDevice> &served) {
  const int64_t plugged = SteadyMs();
  served = std::make_unique<sim::SimulatedDevice>(sim::OneClipOneDive(), sim::Options{},
                                                  usb.plugIn(port).master);
  sim::DeviceSimulator &device = served->device();
  while (device.commands().count("#detail") < 2) Pause(20);
  const QList<int64_t> at = device.commandTimesMs();
  const QList<QByteArray> wire = device.commands();
  const int64_t vi = at.value(int(wire.indexOf("vi")));
  return {at.first() - plugged, vi - at.first(), at.last() - vi};
}

void Measure(const char *what, qint64 pid, int seconds) {
  const double before = CpuSeconds(pid);
  Pause(seconds * 1000);
  const double used = CpuSeconds(pid) - before;
  std::printf("window idle, %-22s %6.3f CPU s in %d s = %.3f%% of a core\n", what, used, seconds,
              100 * used / seconds);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char **argv) {
  VirtualUsb::runUnderPreload(argv, "plugin_bench");
  QCoreApplication app(argc, argv);
  const QStringList arguments = app.arguments();
  const int runs = std::max(1, arguments.value(arguments.indexOf("--runs") + 1).toInt());
  const int idle = std::max(1, arguments.value(arguments.indexOf("--idle") + 1).toInt());

  std::printf("plug-in to both lists filled (1 clip, 1 dive), ms:\n");
  std::printf("%4s %22s %10s %8s %7s\n", "run", "discovery + 1st tick", "handshake", "listing",
              "total");
  std::vector<int64_t> totals;
  for (int run = 1; run <= runs; ++run) {
    VirtualUsb usb;
    Window window;
    std::unique_ptr<sim::SimulatedDevice> device;
    const Timing t = PlugIn(usb, QStringLiteral("1-1"), device);
    totals.push_back(t.discovery + t.handshake + t.listing);
    std::printf("%4d %22lld %10lld %8lld %7lld\n", run, static_cast<long long>(t.discovery),
                static_cast<long long>(t.handshake), static_cast<long long>(t.listing),
                static_cast<long long>(totals.back()));
    std::fflush(stdout);
  }
  std::sort(totals.begin(), totals.end());
  std::printf(
      "median total %lld ms; the pacing: one session tick a second, and discovery's "
      "one-second pause per registry entry searched (3 here), paid after the port opens\n",
      static_cast<long long>(totals[totals.size() / 2]));

  {
    VirtualUsb usb;
    Window window;
    Measure("no device:", window.pid(), idle);
    std::unique_ptr<sim::SimulatedDevice> device;
    PlugIn(usb, QStringLiteral("1-1"), device);
    Pause(4000);  // the walk's pacing ends
    Measure("connected, listed:", window.pid(), idle);
  }
  return 0;
}
