#pragma once

class SessionContext;

// The session timer's side of the connection: once a second one step of the identity
// handshake, the start of the voice index and log history requests, the retry of a clip,
// and the notice of a removed device. The replies move the state on the receive thread.
class Handshake {
 public:
  explicit Handshake(SessionContext &context) : context_(context) {}

  // One tick of the 1.0 s session timer, on the main thread.
  void tick();
  // Restarts the identification on the open port.
  void reconnect();

 private:
  SessionContext &context_;
};
