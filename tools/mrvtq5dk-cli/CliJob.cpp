#include "CliJob.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QThread>
#include <QTimer>
#include <cmath>
#include <cstdio>

#include "Localization.h"

namespace {

constexpr int kTickMs = 1000;  // the session timer, as in the window
constexpr int kTransferTimeoutMs = 3 * 3600 * 1000;

}  // namespace

CliJob::CliJob(CliRequest request)
    : request_(std::move(request)), session_(window_), voice_(session_), logs_(session_) {
  window_.searchRange = request_.range;
  window_.interactive = isatty(STDERR_FILENO);
  if (!request_.output.isEmpty()) {
    const QString output = request_.output;
    session_.context().downloadsFolder = [output] { return output; };
  }
}

bool CliJob::waitUntil(const std::function<bool()> &done, int timeoutMs) {
  QTimer tick;
  QObject::connect(&tick, &QTimer::timeout, [this] { session_.timer2Call(); });
  tick.start(kTickMs);
  QTimer progress;
  QObject::connect(&progress, &QTimer::timeout, [this] { showProgress(); });
  if (window_.interactive) progress.start(250);
  QElapsedTimer clock;
  clock.start();
  while (!done()) {
    messages_ << window_.takeMessages();
    if (clock.elapsed() > timeoutMs) return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    QThread::msleep(5);
  }
  messages_ << window_.takeMessages();
  if (window_.interactive) std::fprintf(stderr, "\r\033[K");
  return true;
}

void CliJob::pause() {
  QElapsedTimer clock;
  clock.start();
  waitUntil([&clock] { return clock.elapsed() >= kTickMs; }, 2 * kTickMs);
}

void CliJob::showProgress() {
  const SessionState &state = session_.state();
  if (state.g_receive_data_type_is_voice_record == eSERIAL_RX_VOICE_DATA &&
      state.g_voice_download_active) {
    const double received = state.g_voice_received_size,
                 expected = std::max(1, state.g_voice_data_size.load());
    const double seconds = std::max(0.001, transferClock_.elapsed() / 1000.0);
    const double rate = received / seconds;
    const int width = 30, filled = int(width * std::min(1.0, received / expected));
    std::fprintf(stderr, "\r\033[K[%s%s] %3d%%  %.0f of %.0f kB  %.1f kB/s  %s left",
                 QByteArray(filled, '#').constData(), QByteArray(width - filled, '.').constData(),
                 int(100 * received / expected), received / 1000, expected / 1000, rate / 1000,
                 rate > 0 ? qPrintable(QStringLiteral("%1 s").arg(
                                std::ceil((expected - received) / rate), 0, 'f', 0))
                          : "?");
  } else if (state.g_serial_port_status == RX_LOG_HISTORY) {
    std::fprintf(stderr, "\r\033[Kreading dive %d, %lld listed", state.g_log_number.load(),
                 static_cast<long long>(window_.rows(IndexList::Log).size()));
  }
}

int CliJob::failureOf(const QStringList &messages) const {
  for (const QString &message : messages) {
    if (message == Localized("target_model_error")) return kCliWrongModel;
    if (message.endsWith(QStringLiteral("folder create error!"))) return kCliCannotWrite;
    if (message == Localized("recive_fail") || message == Localized("retry_recive_fail") ||
        message == QLatin1String(kPowerOffMessage)) {
      return kCliTransferFailed;
    }
  }
  return kCliOk;
}

int CliJob::openPort() {
  session_.state().deviceExist = 1;  // the diver vouches for the port
  if (const auto error = session_.openSerialPort(request_.port, kDeviceBaudRate)) {
    std::fprintf(stderr, "mrvtq5dk-cli: no device: %s (%s)\n", qPrintable(*error),
                 qPrintable(request_.port));
    return kCliNoDevice;
  }
  return kCliOk;
}

int CliJob::discover() {
  // The window refuses a device plugged in before it starts; a command is started with the
  // device plugged in, so its first pass opens what it finds.
  SessionState &state = session_.state();
  state.initialRunning = false;
  discovery_ = std::make_unique<DeviceDiscovery>(&session_, MakePlatformRegistry());
  discovery_->InitDevice();
  if (state.deviceExist == 0) {
    std::fprintf(stderr,
                 "mrvtq5dk-cli: no device: no QM482 on the USB bus (USB 1209:4d52); plug it in, "
                 "or give its serial port with --port\n");
    return kCliNoDevice;
  }
  if (!session_.channel().isOpen()) {
    std::fprintf(stderr,
                 "mrvtq5dk-cli: no device: a QM482 is plugged in, but its serial port did not "
                 "open (see --verbose, and the README on serial permissions)\n");
    return kCliNoDevice;
  }
  return kCliOk;
}

int CliJob::connect() {
  if (!session_.context().CreateFolder()) return kCliCannotWrite;
  logs_.SetIndexSearchDatatime();
  if (const int status = request_.port.isEmpty() ? discover() : openPort()) return status;
  SessionState &state = session_.state();
  const bool listed = waitUntil(
      [&] {
        const int32_t status = state.g_serial_port_status;
        return status == DISCONNECTED ||
               (status == CONNECTED_IDLE && state.g_read_index_sequence == 0) ||
               !state.readThreadRunning;
      },
      kTransferTimeoutMs);
  if (const int failure = failureOf(messages_)) return failure;
  if (!listed || state.g_serial_port_status != CONNECTED_IDLE) {
    std::fprintf(stderr, "mrvtq5dk-cli: no device: the device on %s does not answer\n",
                 request_.port.isEmpty() ? "the USB bus" : qPrintable(request_.port));
    return kCliNoDevice;
  }
  pause();
  return kCliOk;
}

void CliJob::printLists() const {
  std::printf("Model %s, firmware %s, %s\n", qPrintable(window_.text(Outlet::label_type)),
              qPrintable(window_.text(Outlet::label_version)),
              qPrintable(window_.text(Outlet::label_serial_number)));
  const auto print = [](const char *title, const QStringList &rows) {
    std::printf("%s (%lld)\n", title, static_cast<long long>(rows.size()));
    for (qsizetype i = 0; i < rows.size(); ++i)
      std::printf("  %3lld  %s\n", static_cast<long long>(i + 1), qPrintable(rows[i]));
  };
  print("Voice clips", window_.rows(IndexList::Voice));
  print("Dive logs", window_.rows(IndexList::Log));
  std::fflush(stdout);
}

int CliJob::downloadVoice(int item) {
  window_.selectRow(IndexList::Voice, item - 1);
  messages_.clear();
  transferClock_.start();
  voice_.action_button_download_voice();
  SessionState &state = session_.state();
  const QString done = Localized("download_complete");
  bool complete = false;
  waitUntil(
      [&] {
        for (const QString &message : messages_) complete |= message.startsWith(done);
        return (failureOf(messages_) != kCliOk || complete) &&
               state.g_serial_port_status == CONNECTED_IDLE && !state.g_voice_download_active;
      },
      kTransferTimeoutMs);
  if (const int failure = failureOf(messages_)) return failure;
  if (!complete) return kCliTransferFailed;
  pause();
  return kCliOk;
}

int CliJob::downloadLog(int item) {
  window_.selectRow(IndexList::Log, item - 1);
  messages_.clear();
  logs_.action_button_download_log();
  SessionState &state = session_.state();
  const QString done = QStringLiteral("\r\n") + Localized("download_complete");
  bool complete = false;
  const bool ended = waitUntil(
      [&] {
        for (const QString &message : messages_) complete |= message.endsWith(done);
        return (complete || failureOf(messages_) != kCliOk) &&
               state.g_serial_port_status == CONNECTED_IDLE;
      },
      60000);
  if (const int failure = failureOf(messages_)) return failure;
  if (!ended || !complete) return kCliTransferFailed;
  pause();
  return kCliOk;
}

int CliJob::run() {
  if (const int status = connect()) return status;
  printLists();
  if (request_.verb == u"list") return kCliOk;

  const bool voice = request_.verb == u"download-voice";
  const qsizetype count = window_.rows(voice ? IndexList::Voice : IndexList::Log).size();
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
  for (int item : items) {
    if (const int status = voice ? downloadVoice(item) : downloadLog(item)) {
      std::fprintf(stderr, "mrvtq5dk-cli: %s %d: the transfer failed\n", voice ? "clip" : "dive",
                   item);
      return status;
    }
  }
  const StoragePaths paths = session_.state().paths.get();
  std::printf("Saved %lld %s in %s\n", static_cast<long long>(items.size()),
              voice ? "clip(s)" : "dive(s)",
              qPrintable(voice ? paths.g_voice_folder_path : paths.g_log_folder_path));
  return kCliOk;
}
