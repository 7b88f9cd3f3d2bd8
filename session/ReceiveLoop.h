#pragma once

#include <array>
#include <atomic>
#include <thread>

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
  // Ends the thread, which closes its port, and waits for it.
  void stop();

  // The thread's work for one read (bytes followed by a terminating zero). Public so that
  // the fuzzers can feed it reads the device never sent.
  void dispatch(char *bytes, size_t length);

 private:
  void receiveThread();

  SessionContext &context_;
  IdentityReplies replies_;
  std::thread thread_;
  std::atomic<bool> stopping_{false};  // a read ended by stop() is no lost line
  // The read buffer, one byte longer than the largest read for the terminating zero.
  std::array<char, 4096 + 1> readBuffer_{};
};
