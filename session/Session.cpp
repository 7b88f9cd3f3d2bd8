#include "Session.h"

#include "Localization.h"

Session::Session(WindowOperations &window, std::unique_ptr<SupervisionTimer> timer1)
    : context_(window),
      receive_(context_),
      handshake_(context_),
      supervision_(context_, std::move(timer1)) {}

Session::~Session() = default;

void Session::closeSerialPort() {
  receive_.stop();
  context_.channel.closePort();
}

std::optional<QString> Session::openSerialPort(const QString &path, unsigned baud) {
  // The old port's thread closes it as it ends, and ends before the new one starts.
  closeSerialPort();

  WindowOperations &window = context_.window;
  if (std::optional<QString> error = context_.channel.openPort(path, baud)) {
    window.setText(Outlet::label_poweron_message, Localized("initial_error"));
    return error;
  }
  window.setText(Outlet::label_serial_number, QStringLiteral("SN."));
  window.setText(Outlet::label_type, QString());
  window.setText(Outlet::label_version, QString());
  window.setText(Outlet::label_poweron_message, Localized("open_serial_port"));
  receive_.start();
  return std::nullopt;
}
