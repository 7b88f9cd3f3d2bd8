#include "SystemLog.h"

#if defined(__APPLE__)
#include <os/log.h>
#else
#include <syslog.h>
#endif

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>

namespace {

std::atomic<LogCapture *> g_capture{nullptr};
std::atomic<bool> g_echo{true};

// The platform's log: the unified log on macOS (public, so that Console shows the text),
// syslog elsewhere.
void WriteToSystemLog(const std::string &line) {
#if defined(__APPLE__)
  os_log(OS_LOG_DEFAULT, "%{public}s", line.c_str());
#else
  static std::once_flag once;
  std::call_once(once, [] { openlog("Mrvtq5dk", LOG_PID, LOG_USER); });
  syslog(LOG_NOTICE, "%s", line.c_str());
#endif
}

}  // namespace

void SystemLog(const char *format, ...) {
  va_list args;
  va_start(args, format);
  va_list copy;
  va_copy(copy, args);
  const int length = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  std::string line(length > 0 ? static_cast<size_t>(length) : 0, '\0');
  if (length > 0) std::vsnprintf(line.data(), line.size() + 1, format, args);
  va_end(args);

  WriteToSystemLog(line);

  LogCapture *capture = g_capture.load();
  if (capture == nullptr ? g_echo.load() : capture->echoesToStderr()) {
    std::fprintf(stderr, "Mrvtq5dk: %s\n", line.c_str());
  }
  if (capture != nullptr) capture->append(std::move(line));
}

void SetSystemLogEcho(bool echo) {
  g_echo = echo;
}

LogCapture::LogCapture(bool echoToStderr) : echo_(echoToStderr) {
  g_capture.store(this);
}

LogCapture::~LogCapture() {
  g_capture.store(nullptr);
}

void LogCapture::append(std::string line) {
  std::lock_guard lock(mutex_);
  lines_.push_back(std::move(line));
}

std::vector<std::string> LogCapture::lines() const {
  std::lock_guard lock(mutex_);
  return lines_;
}

bool LogCapture::contains(std::string_view line) const {
  std::lock_guard lock(mutex_);
  return std::find(lines_.begin(), lines_.end(), line) != lines_.end();
}

std::vector<std::string> LogCapture::startingWith(std::string_view prefix) const {
  std::lock_guard lock(mutex_);
  std::vector<std::string> found;
  for (const std::string &line : lines_) {
    if (std::string_view(line).substr(0, prefix.size()) == prefix) found.push_back(line);
  }
  return found;
}

void LogCapture::clear() {
  std::lock_guard lock(mutex_);
  lines_.clear();
}
