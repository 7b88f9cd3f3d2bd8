#pragma once

#include <QString>
#include <memory>
#include <mutex>
#include <optional>

#include "Handshake.h"
#include "ReceiveLoop.h"
#include "SessionContext.h"

// The device session: one serial channel, the receive thread and the handshake around one
// shared state, publishing what the front ends show in its model. The front end drives
// tick once a second.
class Session {
 public:
  Session();
  ~Session();

  // Opens the device's port at baud and starts the receive thread. A port already open is
  // closed first and its receive thread waited for. Returns the error message on failure.
  std::optional<QString> openSerialPort(const QString &path, unsigned baud);

  // Ends the receive thread and closes the port. The voice and log parts call it as they
  // go away, so that none of their handlers runs after them. Publishes nothing: the front
  // ends may be going away too.
  void closeSerialPort();

  // The session timer's tick, once a second: one handshake step, and the reply deadline.
  void tick() { handshake_.tick(); }

  // Identifies the device and reads both lists again; done hears how it ended. A port
  // that hung up is opened again first.
  void connectAndList(OutcomeHandler done);
  // Reads both lists again from an idle device ("vi" once the line is quiet, then the
  // dives); done hears how it ended. False, with nothing asked, unless the session is idle
  // and no other operation is under way.
  bool relist(OutcomeHandler done);
  // The reconnect button: connectAndList, reported to the connection handler.
  void reconnect();
  // Drops what the session was doing, greys the controls and identifies the device again:
  // the Reconnect button, and a clip that could not even be started.
  void restartHandshake();
  // Who hears how the connection of a newly opened port ended (the window, the command
  // line). Set before the first port opens.
  void setConnectionHandler(OutcomeHandler handler) { connectionHandler_ = std::move(handler); }
  // Ends the operation under way at once, reporting it cancelled.
  void cancel() { context_.transitions.cancel(); }

  SessionContext &context() { return context_; }
  // What the front ends show, and where they hear of each change.
  DeviceModel &model() { return context_.model; }
  SessionState &state() { return context_.state; }
  const SessionState &state() const { return context_.state; }
  SerialChannel &channel() { return context_.channel; }
  ReceiveLoop &receiveLoop() { return receive_; }

 private:
  std::optional<QString> openPort(const QString &path, unsigned baud, OutcomeHandler done);

  SessionContext context_;
  std::mutex portMutex_;  // opening and closing, from discovery threads and the main thread
  Guarded<QString> lastPortPath_;
  OutcomeHandler connectionHandler_;
  ReceiveLoop receive_;
  Handshake handshake_;
};
