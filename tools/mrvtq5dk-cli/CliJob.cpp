#include "CliJob.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QSet>
#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>

#include "Localization.h"
#include "PageDamage.h"

namespace {

constexpr int kTickMs = 1000;  // the session timer, as in the window
// A clip at the slowest link rate takes hours; a stalled one ends in seconds all the same.
constexpr int kClipTimeoutMs = 3 * 3600 * 1000;
// Everything else ends at the reply deadline; this only guards against a fault of ours.
constexpr int kExchangeTimeoutMs = 6 * int(kReplyDeadlineMs);
// A sync ends item by item, each under its own supervision and deadlines.
constexpr int kJobTimeoutMs = 24 * 3600 * 1000;

std::atomic<bool> g_interrupted{false};
// The signal handler writes a byte here; the event loop reads it and stops the job.
int g_interruptPipe[2] = {-1, -1};

void Interrupted(int) {
  g_interrupted = true;
  const char byte = 1;
  [[maybe_unused]] const ssize_t written = write(g_interruptPipe[1], &byte, 1);
}

// Ctrl-C asks the job to stop; a second one ends the program at once.
void CatchInterrupt() {
  if (pipe2(g_interruptPipe, O_CLOEXEC | O_NONBLOCK) != 0) return;
  struct sigaction action {};
  action.sa_handler = Interrupted;
  action.sa_flags = SA_RESETHAND;
  sigaction(SIGINT, &action, nullptr);
}

}  // namespace

int CliStatusOf(Failure failure) {
  switch (failure) {
    case Failure::None:
      return kCliOk;
    case Failure::WrongModel:
      return kCliWrongModel;
    case Failure::CannotSave:
    case Failure::CannotMakeFolder:
      return kCliCannotWrite;
    case Failure::Cancelled:
      return kCliInterrupted;
    default:
      return kCliTransferFailed;
  }
}

CliJob::CliJob(CliRequest request)
    : request_(std::move(request)), interactive_(isatty(STDERR_FILENO)) {
  DeviceModel &model = stack_.session.model();
  QObject::connect(&model, &DeviceModel::notice, [this](const QString &text) { tell(text); });
  QObject::connect(&model, &DeviceModel::changed, [this](const DeviceState &state) {
    if (!state.identity.model.isEmpty()) identified_ = true;
  });
  if (!request_.output.isEmpty()) {
    const QString output = request_.output;
    stack_.session.context().downloadsFolder = [output] { return output; };
  }
  stack_.session.setConnectionHandler(keepOutcome());
}

bool CliJob::waitUntil(const std::function<bool()> &done, int timeoutMs) {
  if (done()) return true;
  QEventLoop loop;
  QTimer tick;
  QObject::connect(&tick, &QTimer::timeout, [this] { stack_.session.tick(); });
  tick.start(kTickMs);
  QTimer progress;
  QObject::connect(&progress, &QTimer::timeout, [this] { showProgress(); });
  if (interactive_) progress.start(250);
  QTimer deadline;
  deadline.setSingleShot(true);
  QObject::connect(&deadline, &QTimer::timeout, [&loop] { loop.exit(1); });
  deadline.start(timeoutMs);
  wake_ = [&loop, &done] {
    if (done()) loop.exit(0);
  };
  // What is complete stays saved; the item under way ends as cancelled.
  if (g_interrupted) stack_.cancel();
  const bool ended = loop.exec() == 0;
  wake_ = nullptr;
  return ended;
}

OutcomeHandler CliJob::keepOutcome() {
  return [this](const Outcome &outcome) {
    outcome_ = outcome;
    wake();
  };
}

void CliJob::wake() {
  if (wake_) wake_();
}

std::optional<Outcome> CliJob::waitForOutcome(int timeoutMs) {
  const bool ended = waitUntil([this] { return outcome_.has_value(); }, timeoutMs);
  // A failed transfer keeps its last progress line in sight; a finished one clears it.
  if (interactive_) {
    std::fprintf(stderr, ended && outcome_->ok() ? "\r\033[K" : "\n");
  }
  return std::exchange(outcome_, std::nullopt);
}

void CliJob::pause() {
  bool over = false;
  QTimer tick;
  tick.setSingleShot(true);
  QObject::connect(&tick, &QTimer::timeout, [this, &over] {
    over = true;
    wake();
  });
  tick.start(kTickMs);
  waitUntil([&over] { return over; }, 2 * kTickMs);
}

void CliJob::showProgress() {
  const DeviceState state = stack_.session.model().state();
  const Progress &progress = state.progress;
  if (state.operation == Operation::DownloadClip && progress.bytesTotal > 0) {
    const double received = double(progress.bytesDone), expected = double(progress.bytesTotal);
    const double seconds = std::max(0.001, transferClock_.elapsed() / 1000.0);
    const double rate = received / seconds;
    const int width = 30, filled = width * progress.percent() / 100;
    std::fprintf(stderr, "\r\033[K[%s%s] %3d%%  %.0f of %.0f kB  %.1f kB/s  %s left",
                 QByteArray(filled, '#').constData(), QByteArray(width - filled, '.').constData(),
                 progress.percent(), received / 1000, expected / 1000, rate / 1000,
                 rate > 0 ? qPrintable(QStringLiteral("%1 s").arg(
                                std::ceil((expected - received) / rate), 0, 'f', 0))
                          : "?");
  } else if (state.phase == DevicePhase::Listing && progress.bytesTotal > 0) {
    std::fprintf(stderr, "\r\033[Kreading dive %d, %lld listed", progress.item,
                 static_cast<long long>(state.dives.size()));
  }
}

int CliJob::openPort() {
  stack_.session.state().deviceExist = 1;  // the diver vouches for the port
  if (const auto error = stack_.session.openSerialPort(request_.port, kDeviceBaudRate)) {
    std::fprintf(stderr, "mrvtq5dk-cli: no device: %s (%s)\n", qPrintable(*error),
                 qPrintable(request_.port));
    return kCliNoDevice;
  }
  return kCliOk;
}

int CliJob::discover() {
  // The window refuses a device plugged in before it starts; a command is started with the
  // device plugged in, so its first pass opens what it finds.
  SessionState &state = stack_.session.state();
  state.initialRunning = false;
  discovery_ = std::make_unique<DeviceDiscovery>(&stack_.session, MakePlatformRegistry());
  discovery_->startDiscovery();
  if (state.deviceExist == 0) {
    std::fprintf(stderr,
                 "mrvtq5dk-cli: no device: no QM482 on the USB bus (USB 1209:4d52); plug it in, "
                 "or give its serial port with --port\n");
    return kCliNoDevice;
  }
  if (!stack_.session.channel().isOpen()) {
    std::fprintf(stderr,
                 "mrvtq5dk-cli: no device: a QM482 is plugged in, but its serial port did not "
                 "open (see --verbose, and the README on serial permissions)\n");
    return kCliNoDevice;
  }
  return kCliOk;
}

int CliJob::connect() {
  if (QString error; !stack_.session.context().createFolders(&error)) {
    std::fprintf(stderr, "mrvtq5dk-cli: %s\n", qPrintable(error));
    return kCliCannotWrite;
  }
  stack_.logs.setSearchRange(request_.rangeMonths);
  if (const int status = request_.port.isEmpty() ? discover() : openPort()) return status;
  const std::optional<Outcome> outcome = waitForOutcome(kExchangeTimeoutMs);
  if (outcome && outcome->ok()) {
    pause();
    return kCliOk;
  }
  const QString where = request_.port.isEmpty() ? QStringLiteral("the USB bus") : request_.port;
  if (!outcome) {
    std::fprintf(stderr, "mrvtq5dk-cli: no device: the device on %s does not answer\n",
                 qPrintable(where));
    return kCliNoDevice;
  }
  switch (outcome->failure) {
    case Failure::WrongModel:
      std::fprintf(stderr, "mrvtq5dk-cli: %s\n", qPrintable(outcome->sentence));
      return kCliWrongModel;
    case Failure::IdentityRefused:
      std::fprintf(stderr, "mrvtq5dk-cli: no device: the device on %s does not answer as a QM482\n",
                   qPrintable(where));
      return kCliNoDevice;
    default:
      std::fprintf(stderr, "mrvtq5dk-cli: %s\n", qPrintable(outcome->sentence));
      // Silence before the device said what it is: no device there to speak of.
      return identified_ ? CliStatusOf(outcome->failure) : kCliNoDevice;
  }
}

void CliJob::tell(const QString &text) {
  QString line = text;
  line.replace(QStringLiteral("\r\n"), QStringLiteral(" ")).replace(u'\n', u' ');
  std::fprintf(stderr, "%s%s\n", interactive_ ? "\r\033[K" : "", qPrintable(line.trimmed()));
}

void CliJob::printIdentity() {
  const DeviceIdentity identity = stack_.session.model().state().identity;
  std::printf("Model %s, firmware %s, SN.%s\n", qPrintable(identity.model),
              qPrintable(identity.versionText), qPrintable(identity.serialNumber));
}

void CliJob::printLists() {
  printIdentity();
  const auto print = [](const char *title, const QStringList &rows) {
    std::printf("%s (%lld)\n", title, static_cast<long long>(rows.size()));
    for (qsizetype i = 0; i < rows.size(); ++i)
      std::printf("  %3lld  %s\n", static_cast<long long>(i + 1), qPrintable(rows[i]));
  };
  // A row saved before, its file still there unchanged, is marked with "*".
  QSet<QString> saved;
  for (const DeviceLibrary::Item &item : stack_.deviceLibrary.listed()) {
    if (item.savedPath) saved.insert(item.name);
  }
  const auto marked = [&saved](const QStringList &rows) {
    QStringList lines;
    for (const QString &row : rows)
      lines << row + (saved.contains(row) ? QStringLiteral(" *") : QString());
    return lines;
  };
  const DeviceState lists = stack_.session.model().state();
  print("Voice clips", marked(RowTexts(lists.clips)));
  print("Dive logs", marked(RowTexts(lists.dives)));
  std::fflush(stdout);
}

Outcome CliJob::download(bool voice, int item) {
  const DeviceState lists = stack_.session.model().state();
  const OutcomeHandler keep = keepOutcome();
  transferClock_.start();
  // Through the library, which records the file; a dive comes over the wire again, as
  // the diver asked for it.
  const int32_t number =
      (voice ? RowNumbers(lists.clips) : RowNumbers(lists.dives)).value(item - 1);
  if (voice) {
    stack_.downloadClip(number, keep);
  } else {
    if (const std::optional<PageDamage> damage = lists.dives.value(item - 1).damage)
      tell(DamagedPageSaved(*damage));
    stack_.downloadDive(number, keep);
  }
  std::optional<Outcome> outcome = waitForOutcome(voice ? kClipTimeoutMs : kExchangeTimeoutMs);
  if (!outcome) {
    stack_.session.cancel();
    outcome_.reset();
    return Outcome{voice ? Operation::DownloadClip : Operation::DownloadDive,
                   Failure::NotAnswering,
                   Localized("device_not_answering"),
                   {}};
  }
  return *outcome;
}

int CliJob::sync() {
  printIdentity();
  stack_.saveAll.setItemHandler([this](const DeviceLibrary::Item &item, const Outcome &outcome) {
    if (outcome.ok()) {
      std::printf("saved %s\n", qPrintable(QDir::toNativeSeparators(outcome.path)));
      std::fflush(stdout);
    } else if (outcome.failure != Failure::Cancelled) {
      tell(outcome.sentence);
      std::fprintf(stderr, "mrvtq5dk-cli: %s %s was not saved\n",
                   item.kind == ItemKind::Dive ? "dive" : "clip", qPrintable(item.name));
    }
  });
  std::optional<SaveAllReport> report;
  stack_.saveAll.start([this, &report](const SaveAllReport &ended) {
    report = ended;
    wake();
  });
  if (!waitUntil([&report] { return report.has_value(); }, kJobTimeoutMs)) {
    std::fprintf(stderr, "mrvtq5dk-cli: the device stopped answering\n");
    return kCliTransferFailed;
  }
  const int saved = int(report->saved.size()), failed = int(report->failed.size());
  const QByteArray damaged =
      report->damaged > 0
          ? QByteArray(", ") + QByteArray::number(report->damaged) + " damaged pages not saved"
          : QByteArray();
  if (saved == 0 && failed == 0 && !report->cancelled) {
    std::printf("Nothing new: all %d listed item(s) are saved%s\n", report->alreadySaved,
                damaged.constData());
    return kCliOk;
  }
  std::printf("Saved %d new item(s), %d already saved, %d failed%s%s\n", saved,
              report->alreadySaved, failed, damaged.constData(),
              report->cancelled ? ", interrupted" : "");
  if (report->cancelled) return kCliInterrupted;
  if (failed == 0) return kCliOk;
  // Only files that could not be written: the folder's fault, not the device's.
  const bool cannotWrite = std::all_of(report->failed.cbegin(), report->failed.cend(),
                                       [](const SaveAllReport::Failed &f) {
                                         return CliStatusOf(f.outcome.failure) == kCliCannotWrite;
                                       });
  return cannotWrite ? kCliCannotWrite : kCliTransferFailed;
}

int CliJob::run() {
  CatchInterrupt();
  QSocketNotifier interrupt(g_interruptPipe[0], QSocketNotifier::Read);
  QObject::connect(&interrupt, &QSocketNotifier::activated, [this, &interrupt] {
    interrupt.setEnabled(false);  // a second Ctrl-C ends the program
    stack_.cancel();
  });
  if (!stack_.library.notice().isEmpty()) {
    std::fprintf(stderr, "mrvtq5dk-cli: %s\n", qPrintable(stack_.library.notice()));
  }
  if (const int status = connect()) return status;
  if (request_.verb == u"sync") return sync();
  printLists();
  if (request_.verb == u"list") return kCliOk;

  const bool voice = request_.verb == u"download-voice";
  const DeviceState lists = stack_.session.model().state();
  const qsizetype count = voice ? lists.clips.size() : lists.dives.size();
  QList<int> items = request_.items;
  if (request_.all) {
    items.clear();
    for (int i = 1; i <= count; ++i) items << i;
  }
  for (int item : items) {
    if (item < 1 || item > count) {
      std::fprintf(stderr, "mrvtq5dk-cli: there is no %s %d (the list has %lld)\n",
                   voice ? "clip" : "dive", item, static_cast<long long>(count));
      return kCliUsage;
    }
  }
  // Every item is tried; one that fails does not keep the rest from being saved.
  QStringList failures;
  QList<int> statuses;
  for (int item : items) {
    const Outcome outcome = download(voice, item);
    if (!outcome.sentence.isEmpty()) tell(outcome.sentence);
    if (outcome.ok()) {
      pause();
      continue;
    }
    failures << QStringLiteral("%1 %2").arg(voice ? u"clip" : u"dive").arg(item);
    statuses << CliStatusOf(outcome.failure);
  }
  const StoragePaths paths = stack_.session.state().paths.get();
  std::printf("Saved %lld %s in %s\n", static_cast<long long>(items.size() - failures.size()),
              voice ? "clip(s)" : "dive(s)",
              qPrintable(voice ? paths.voiceFolder : paths.logFolder));
  if (failures.isEmpty()) return kCliOk;
  std::fprintf(stderr, "mrvtq5dk-cli: the transfer failed for %s\n",
               qPrintable(failures.join(QStringLiteral(", "))));
  // One kind of failure is told by its own status; a mix is a failed transfer.
  return statuses.count(statuses.first()) == statuses.size() ? statuses.first()
                                                             : kCliTransferFailed;
}
