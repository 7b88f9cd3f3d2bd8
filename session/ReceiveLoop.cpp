#include "ReceiveLoop.h"

#include <pthread.h>
#include <sched.h>

#include "SessionContext.h"
#include "SystemLog.h"

ReceiveLoop::ReceiveLoop(SessionContext &context) : context_(context), replies_(context) {}

ReceiveLoop::~ReceiveLoop() {
  stop();
}

void ReceiveLoop::start() {
  stop();
  context_.state.readThreadRunning = true;
  thread_ = std::thread([this] { receiveThread(); });
}

void ReceiveLoop::stop() {
  if (!thread_.joinable()) return;
  stopping_ = true;
  context_.channel.wakeReader();
  thread_.join();
  stopping_ = false;
}

void ReceiveLoop::receiveThread() {
  // Clip bytes come 2040 at a time between acknowledgements: drain them promptly. Where
  // the system lets an ordinary user raise a thread's priority, this does.
  sched_param highest{};
  highest.sched_priority = sched_get_priority_max(SCHED_OTHER);
  pthread_setschedparam(pthread_self(), SCHED_OTHER, &highest);

  const size_t capacity = readBuffer_.size() - 1;
  ssize_t result;
  for (;;) {
    result = context_.channel.readPort(readBuffer_.data(), capacity);
    if (result == 0) {
      SystemLog("read non %ld", long(result));
      continue;
    }
    if (result < 0) break;
    context_.transitions.byteReceived();
    readBuffer_[size_t(result)] = '\0';
    dispatch(readBuffer_.data(), size_t(result));
  }
  SystemLog("read error! %ld", long(result));
  context_.channel.closePort();
  context_.state.readThreadRunning = false;
  if (!stopping_) context_.transitions.lineLost();
}

void ReceiveLoop::dispatch(char *bytes, size_t length) {
  const SessionHooks &hooks = context_.hooks;
  const std::function<void(char *, size_t)> *handler = nullptr;
  switch (context_.state.receiveType.load()) {
    case eSERIAL_RX_RESPONSE:
      return replies_.handle(bytes, length);
    case eSERIAL_RX_VOICE_INDEX:
      handler = &hooks.voiceIndex;
      break;
    case eSERIAL_RX_VOICE_DATA:
      handler = &hooks.voiceData;
      break;
    case eSERIAL_RX_LOG_HISTORY:
      handler = &hooks.logHistory;
      break;
    case eSERIAL_RX_LOG_DATA:
      handler = &hooks.logData;
      break;
    default:
      return;  // no reader for these selectors: the bytes are dropped
  }
  if (*handler) (*handler)(bytes, length);
}
