#pragma once

#include <QThread>
#include <array>
#include <memory>

#include "IdentityReplies.h"

class SessionContext;

// The one thread that reads the serial port. Each read is one unit, handed to the handler
// that the selector (and for text replies the session state) chooses; the loop itself
// only dispatches. It runs from a successful open until its first failed read.
class ReceiveLoop {
 public:
  explicit ReceiveLoop(SessionContext &context);
  ~ReceiveLoop();

  void start();
  // Waits for a thread that has been told to end (its port closed) to finish.
  void waitUntilFinished();

 private:
  void reciveThread();
  void dispatch(char *bytes, size_t length);

  SessionContext &context_;
  IdentityReplies replies_;
  std::unique_ptr<QThread> thread_;
  // The read buffer, one byte longer than the largest read for the terminating zero.
  std::array<char, 4096 + 1> b_cdc_acm_rx_buffer_{};
};
