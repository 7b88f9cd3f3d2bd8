#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

// Writes one diagnostic line to the system log (identity "Mrvtq5dk") and to stderr.
// The lines are part of the program's behaviour: support reads them to follow a
// session step by step. The format is checked against its arguments at compile time.
void SystemLog(const char *format, ...) __attribute__((format(printf, 1, 2)));

// Whether lines are also written to stderr (the default). A terminal front end turns it
// off so that its own output stays readable; the system log still gets every line.
void SetSystemLogEcho(bool echo);

// While alive, collects every line written by SystemLog on any thread. Lines still go to
// the system log; stderr is kept quiet unless echo is asked for. One capture at a time.
class LogCapture {
 public:
  explicit LogCapture(bool echoToStderr = false);
  ~LogCapture();
  LogCapture(const LogCapture &) = delete;
  LogCapture &operator=(const LogCapture &) = delete;

  std::vector<std::string> lines() const;
  bool contains(std::string_view line) const;
  // Lines that begin with the given text.
  std::vector<std::string> startingWith(std::string_view prefix) const;
  void clear();

  // Called by SystemLog.
  void append(std::string line);
  bool echoesToStderr() const { return echo_; }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
  bool echo_;
};
