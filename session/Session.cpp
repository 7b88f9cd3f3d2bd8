#include "Session.h"

#include <QThread>

#include "Localization.h"

Session::Session(WindowOperations &window, std::unique_ptr<SupervisionTimer> timer1)
    : context_(window),
      receive_(context_),
      handshake_(context_),
      supervision_(context_, std::move(timer1)) {}

Session::~Session() = default;

std::optional<QString> Session::openSerialPort(const QString &path, unsigned baud) {
  if (context_.channel.isOpen()) {
    context_.channel.closePort();
    if (!context_.state.readThreadRunning) QThread::yieldCurrentThread();
  }
  // The old thread notices the closed port and ends; the new one must not start before.
  receive_.waitUntilFinished();

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
