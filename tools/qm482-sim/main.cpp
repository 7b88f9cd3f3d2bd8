// qm482-sim: plays a Corvamund QM482 on a pseudo-terminal, for tests, demos and benchmarks.
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDate>
#include <cstdio>
#include <cstring>

#include "DeviceSimulator.h"
#include "PseudoTerminal.h"
#include "SimOptions.h"
#include "UsbRun.h"

namespace {

constexpr const char *kDescription =
    R"(Plays a Corvamund QM482 on the master side of a pseudo-terminal.

Without --fd it opens a new pseudo-terminal and prints the path of its slave side on the
first line of standard output; the host program opens that path as the device's serial
port. It answers "#kind", "#detail", "#gser", "#cdcwait N", "vi", "vhNN" and "vrNN" (the
clip in windows of 2040 bytes released by "vx" for "vh"), "lh", "lpNNNNNN" and "lrNNN",
and runs until it is killed or a --hangup-after fault hangs up.

Contents come from --seed around --today: five clips (one from 2021, one under a minute,
one across blocks 1000-1023, one that wraps the ring), and seven of twelve dives held
(one dated 99-12-31, one below zero, one with a full 504-sample profile). A scenario file
(--scenario) is a JSON object with any of the long options below as keys, plus
  "clips": [{"start": "2023-04-05T13:07:22", "first": 2, "last": 15}, ...]
  "dives": [{"entry": "2023-11-05T14:00:00", "minutes": 45, "sampling": 10,
             "maxDepth": 1834, "surfaceTemperature": 270, "bottomTemperature": 215}, ...]
(depth in centimetres, temperatures in tenths of a degree, times on the device's UTC clock).
Options on the command line win over the scenario file.

With --usb it plugs the device into a virtual USB bus (umockdev) instead, as USB device
1209:4d52 with a tty node, runs the command given after "--" on that bus (under
umockdev-wrapper), and ends with the command's exit status when it ends:
  qm482-sim --usb -- mrvtq5dk-cli list
  qm482-sim --usb --plug-in-after 3000 -- Mrvtq5dk

Command names for --split, --garbage and --silent: kind, detail, gser, cdcwait, vi, vh,
vr, lh, lp, lr.)";

}  // namespace

int main(int argc, char **argv) {
  EnterVirtualUsbIfAsked(argv);
  QCoreApplication app(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("qm482-sim"));
  QCommandLineParser parser;
  parser.setApplicationDescription(QString::fromUtf8(kDescription));
  parser.addHelpOption();
  const auto option = [&parser](const char *name, const char *help, const char *value = nullptr) {
    parser.addOption(
        value ? QCommandLineOption(QString::fromLatin1(name), QString::fromLatin1(help),
                                   QString::fromLatin1(value))
              : QCommandLineOption(QString::fromLatin1(name), QString::fromLatin1(help)));
  };
  option("fd", "Serve an already open master descriptor instead of a new pseudo-terminal.", "N");
  option("seed", "Seed of the generated contents (default 1).", "N");
  option("today", "The day the contents are generated around (default: today).", "yyyy-MM-dd");
  option("scenario", "Read contents and options from a JSON scenario file.", "FILE");
  option("verbose", "Print each command received on standard error.");
  option("rate", "Link rate limit in bytes per second (960 is a 9600-baud UART; 0 none).", "BYTES");
  option("latency", "Delay before each reply begins.", "MS");
  option("model", "Model in the \"#kind\" reply (default QM482CS).", "TEXT");
  option("firmware",
         "Firmware version in the \"#detail\" reply (default 1.180; 1.175 and up use \"vx\").",
         "TEXT");
  option("detail-fields", "Fields of the \"#detail\" reply: 6 or 7.", "N");
  option("serial", "Serial number in the \"#gser\" reply.", "TEXT");
  option("total-dives", "Dives ever recorded, in the history record.", "N");
  option("held-count", "Held-dives count sent in the history record in place of the real one.",
         "N");
  option("history-number", "History number in the history record.", "N");
  option("profile-size", "Profile size sent in every dive page (above 512 runs past the page).",
         "N");
  option("long-index", "Send a voice index of more than 4096 bytes.");
  option("stall-after", "Stop sending a clip after this many of its bytes.", "BYTES");
  option("stall-resume", "Resume a stalled clip after this long (default: never).", "MS");
  option("extra-bytes", "Send this many bytes more than a clip holds.", "N");
  option("split", "Send a reply in pieces, split at these offsets (repeatable).", "CMD:OFF[,OFF]");
  option("split-gap", "Pause between the pieces of a split reply (default 40).", "MS");
  option("garbage", "Answer these commands with garbage of the reply's length.", "CMD[,CMD]");
  option("silent", "Never answer these commands.", "CMD[,CMD]");
  option("hangup-after", "Hang up after this many clip and page bytes.", "BYTES");
  option("usb", "Plug into a virtual USB bus and run the command after \"--\" on it.");
  option("plug-in-after", "With --usb: plug in this long after the command starts (default 0).",
         "MS");
  parser.addPositionalArgument(QStringLiteral("command"), QStringLiteral("With --usb."),
                               QStringLiteral("[-- command...]"));
  parser.process(app);

  const QDate today = parser.isSet(QStringLiteral("today"))
                          ? QDate::fromString(parser.value(QStringLiteral("today")), Qt::ISODate)
                          : QDate::currentDate();
  if (!today.isValid()) {
    std::fprintf(stderr, "qm482-sim: --today needs a date as yyyy-MM-dd\n");
    return 2;
  }
  sim::Contents contents =
      sim::GenerateContents(parser.value(QStringLiteral("seed")).toUInt(), today);
  sim::Options options;
  options.seed = parser.value(QStringLiteral("seed")).toUInt();
  options.echoCommands = parser.isSet(QStringLiteral("verbose"));
  QString error;
  if (parser.isSet(QStringLiteral("scenario"))) {
    error = sim::LoadScenario(parser.value(QStringLiteral("scenario")), contents, options);
  }
  QVariantMap given;
  for (const QString &name : parser.optionNames()) {
    const QStringList values = parser.values(name);
    given[name] = values.isEmpty() ? QVariant(true)
                  : name == u"split" || name == u"garbage" || name == u"silent"
                      ? QVariant(values)
                      : QVariant(values.last());
  }
  if (error.isEmpty()) error = sim::ApplyOptions(given, options, contents);
  if (!error.isEmpty()) {
    std::fprintf(stderr, "qm482-sim: %s\n", qPrintable(error));
    return 2;
  }

  if (parser.isSet(QStringLiteral("usb"))) {
    return RunOnVirtualUsb(std::move(contents), options, parser.positionalArguments(),
                           parser.value(QStringLiteral("plug-in-after")).toInt());
  }
  int master = -1;
  if (parser.isSet(QStringLiteral("fd"))) {
    master = parser.value(QStringLiteral("fd")).toInt();
  } else {
    QString slave;
    master = sim::OpenPseudoTerminal(slave, error);
    if (master < 0) {
      std::fprintf(stderr, "qm482-sim: cannot open a pseudo-terminal: %s\n", qPrintable(error));
      return 1;
    }
    std::printf("%s\n", qPrintable(slave));
    std::fflush(stdout);
  }
  sim::DeviceSimulator device(std::move(contents), options);
  device.serve(master);
  return 0;
}
