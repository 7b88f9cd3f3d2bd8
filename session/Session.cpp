#include "Session.h"

#include "Commands.h"
#include "Localization.h"
#include "SystemLog.h"

Session::Session() : receive_(context_), handshake_(context_) {}

Session::~Session() = default;

void Session::closeSerialPort() {
  std::lock_guard lock(portMutex_);
  receive_.stop();
  context_.channel.closePort();
}

std::optional<QString> Session::openSerialPort(const QString &path, unsigned baud) {
  return openPort(path, baud, connectionHandler_);
}

std::optional<QString> Session::openPort(const QString &path, unsigned baud, OutcomeHandler done) {
  // Two arrivals may race here: one port at a time is given up and opened.
  std::lock_guard lock(portMutex_);
  // The old port's thread closes it as it ends, and ends before the new one starts.
  receive_.stop();
  context_.channel.closePort();
  lastPortPath_.set(path);

  const std::optional<QString> error = context_.channel.openPort(path, baud);
  context_.model.update([failed = error.has_value()](DeviceState &published) {
    published.portOpenFailed = failed;
    if (!failed) published.identity = {};
  });
  if (error) return error;
  // A port opened again after an unplug or a hang-up is identified and listed afresh,
  // exactly as on the first plug-in.
  context_.transitions.freshStart();
  context_.operation.begin(Operation::ConnectAndList, std::move(done));
  receive_.start();
  return std::nullopt;
}

void Session::connectAndList(OutcomeHandler done) {
  if (!context_.channel.isOpen()) {
    // The line hung up but the device is still there: open its port again.
    const QString path = lastPortPath_.get();
    SystemLog("Reconnect:serialFileDescriptor -1.");
    if (path.isEmpty() || context_.state.deviceExist == 0) {
      Outcome outcome{
          Operation::ConnectAndList, Failure::NoPort, QString::fromLatin1(kPowerOffMessage), {}};
      if (done) done(outcome);
      return;
    }
    if (const std::optional<QString> error = openPort(path, kDeviceBaudRate, std::move(done))) {
      SystemLog("serial port reopen error:%s", qUtf8Printable(*error));
      context_.transitions.disconnect(Failure::NoPort, Localized("initial_error"));
    }
    return;
  }
  context_.operation.fail(Failure::Cancelled, Localized("transfer_cancelled"));
  context_.operation.begin(Operation::ConnectAndList, std::move(done));
  handshake_.reconnect();
}

bool Session::relist(OutcomeHandler done) {
  SessionState &state = context_.state;
  if (state.phase != CONNECTED_IDLE ||
      !context_.operation.begin(Operation::ConnectAndList, std::move(done))) {
    return false;
  }
  state.indexSequence = 1;
  context_.clearClips();
  context_.clearDives();
  context_.transitions.offerRequests(false);
  // The answer to the last listing's closing "#detail" may still be on its way.
  context_.whenLineQuiet([this] {
    if (context_.state.phase != CONNECTED_IDLE) return;
    context_.transitions.request(CONNECTED_IDLE, eSERIAL_RX_VOICE_INDEX,
                                 QString::fromLatin1(Command::kVoiceIndex));
  });
  return true;
}

void Session::reconnect() {
  connectAndList(connectionHandler_);
}

void Session::restartHandshake() {
  context_.transitions.enter(DISCONNECTED);
  context_.transitions.offerRequests(false);
  reconnect();
}
