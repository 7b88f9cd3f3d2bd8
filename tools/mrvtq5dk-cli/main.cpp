// mrvtq5dk-cli: the program's main job without a window. The device sees exactly the
// protocol the window speaks: same session, same timers.
#include <QCommandLineParser>
#include <QCoreApplication>
#include <cstdio>

#include "CliExport.h"
#include "CliJob.h"
#include "Localization.h"
#include "SearchRange.h"
#include "SystemLog.h"

namespace {

constexpr const char *kDescription = R"(Takes voice clips and dive logs off a Corvamund QM482.

Verbs:
  list                        identity, then the voice clips and dives, numbered
  download-voice N... | --all saves clips as WAV files in <Downloads>/Mrvtq5dk/voice
  download-log N... | --all   saves dives as CSV files in <Downloads>/Mrvtq5dk/log
  sync                        saves every dive and clip not saved before (run it again
                              after an interruption: it fetches only what is missing)
  export FILE.uddf            writes the dives the library holds (no device needed) as a
                              UDDF 3.2.3 logbook, for a logbook program's File > Import;
                              each saved voice clip recorded during a dive (found in
                              <Downloads>/Mrvtq5dk/voice) is linked from that dive.
                              --since yyyy-mm-dd: only dives of that day (Japan time) and
                              later; --device SERIAL: only that device's dives (default:
                              the dives of every device the library has seen)

The numbers are those that "list" prints for the chosen --range. Without --port the
device is found on the USB bus (vendor 1209, product 4d52).
Exit status: 0 done, 2 wrong use, 3 no device, 4 not a QM482, 5 a transfer failed,
6 the folder (or FILE.uddf) cannot be written, 130 interrupted (Ctrl-C).)";

}  // namespace

int main(int argc, char **argv) {
  QCoreApplication app(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("mrvtq5dk-cli"));
  QCoreApplication::setApplicationVersion(QStringLiteral(MRVTQ5DK_VERSION));
  InstallStringTables();

  QCommandLineParser parser;
  parser.setApplicationDescription(QString::fromUtf8(kDescription));
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addPositionalArgument(
      QStringLiteral("verb"), QStringLiteral("list, download-voice, download-log, sync or export"));
  parser.addPositionalArgument(QStringLiteral("N"),
                               QStringLiteral("Items to download, or the file to export to"),
                               QStringLiteral("[N...|FILE.uddf]"));
  const QCommandLineOption port(
      QStringLiteral("port"),
      QStringLiteral("Use the serial port at PATH instead of finding the device."),
      QStringLiteral("PATH"));
  const QCommandLineOption output(QStringLiteral("output"),
                                  QStringLiteral("Use DIR in place of the Downloads folder."),
                                  QStringLiteral("DIR"));
  const QCommandLineOption range(
      QStringLiteral("range"),
      QStringLiteral("Show the last RANGE: 1 month, 3 months, 6 months, 1 year, 2 years or "
                     "5 years, also written 3m, 1y and so on (default 5 years)."),
      QStringLiteral("RANGE"), QStringLiteral("5 years"));
  const QCommandLineOption all(QStringLiteral("all"),
                               QStringLiteral("Download every item of the list."));
  const QCommandLineOption verbose(QStringLiteral("verbose"),
                                   QStringLiteral("Also print the system log's lines on stderr."));
  const QCommandLineOption since(
      QStringLiteral("since"), QStringLiteral("export: only dives on or after DATE (yyyy-mm-dd)."),
      QStringLiteral("DATE"));
  const QCommandLineOption device(
      QStringLiteral("device"),
      QStringLiteral("export: only the dives of the device with this serial number (default: "
                     "every device in the library)."),
      QStringLiteral("SERIAL"));
  parser.addOptions({port, output, range, all, verbose, since, device});
  const auto wrongUse = [](const QString &what) {
    std::fprintf(stderr, "mrvtq5dk-cli: %s (see mrvtq5dk-cli --help)\n", qPrintable(what));
    return kCliUsage;
  };
  if (!parser.parse(app.arguments())) return wrongUse(parser.errorText());
  if (parser.isSet(QStringLiteral("help"))) parser.showHelp(kCliOk);
  if (parser.isSet(QStringLiteral("version"))) parser.showVersion();
  SetSystemLogEcho(parser.isSet(verbose));

  CliRequest request;
  const QStringList arguments = parser.positionalArguments();
  request.verb = arguments.value(0);
  request.port = parser.value(port);
  request.output = parser.value(output);
  request.all = parser.isSet(all);
  const bool download = request.verb == u"download-voice" || request.verb == u"download-log";
  if (request.verb.isEmpty()) return wrongUse(QStringLiteral("no verb given"));
  if (request.verb == u"export") {
    if (arguments.size() != 2) return wrongUse(QStringLiteral("export needs one FILE.uddf"));
    if (parser.isSet(port) || parser.isSet(all) || parser.isSet(range)) {
      return wrongUse(
          QStringLiteral("export reads the library: it takes no --port, --all or --range"));
    }
    CliExportRequest exportRequest{arguments[1], request.output, {}, parser.value(device)};
    if (parser.isSet(since)) {
      exportRequest.since = QDate::fromString(parser.value(since), QStringLiteral("yyyy-MM-dd"));
      if (!exportRequest.since.isValid()) {
        return wrongUse(QStringLiteral("--since takes a date as yyyy-mm-dd, not \"%1\"")
                            .arg(parser.value(since)));
      }
    }
    return RunExport(exportRequest);
  }
  if (parser.isSet(since) || parser.isSet(device)) {
    return wrongUse(QStringLiteral("--since and --device are for export"));
  }
  if (request.verb != u"list" && request.verb != u"sync" && !download) {
    return wrongUse(QStringLiteral("unknown verb \"%1\"; the verbs are list, download-voice, "
                                   "download-log, sync and export")
                        .arg(request.verb));
  }
  const std::optional<int> months = ParseSearchRange(parser.value(range));
  if (!months) {
    return wrongUse(QStringLiteral("unknown range \"%1\"; the ranges are 1 month, 3 months, "
                                   "6 months, 1 year, 2 years and 5 years (or 1m, 3m, 6m, 1y, "
                                   "2y, 5y)")
                        .arg(parser.value(range)));
  }
  request.rangeMonths = *months;
  for (const QString &item : arguments.mid(1)) {
    bool ok = false;
    request.items << item.toInt(&ok);
    if (!ok || !download) {
      return wrongUse(download ? QStringLiteral("%1 is not an item number").arg(item)
                               : QStringLiteral("%1 takes no item numbers").arg(request.verb));
    }
  }
  if (download && request.items.isEmpty() && !request.all) {
    return wrongUse(QStringLiteral("%1 needs item numbers or --all").arg(request.verb));
  }
  if (download && !request.items.isEmpty() && request.all) {
    return wrongUse(QStringLiteral("give item numbers or --all, not both"));
  }
  return CliJob(request).run();
}
