#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QString>
#include <functional>
#include <optional>

#include "DeviceDiscovery.h"
#include "DeviceStack.h"
#include "SearchRange.h"

// Exit statuses of mrvtq5dk-cli.
enum CliStatus : int {
  kCliOk = 0,
  kCliUsage = 2,
  kCliNoDevice = 3,
  kCliWrongModel = 4,
  kCliTransferFailed = 5,
  kCliCannotWrite = 6,
  kCliInterrupted = 130,  // Ctrl-C, as a shell reports it
};

// The exit status that tells how an operation failed.
int CliStatusOf(Failure failure);

struct CliRequest {
  QString verb;    // list, download-voice, download-log, sync
  QString port;    // empty: find the device on the USB bus
  QString output;  // in place of the Downloads folder; empty for it
  int rangeMonths = kLongestSearchRangeMonths;
  QList<int> items;  // 1-based, as "list" prints them
  bool all = false;
};

// One run of the command-line front end: the same session, timers and flows as the
// window, driven to a verb's end. Prints the lists on stdout, boxes and progress on stderr.
class CliJob {
 public:
  explicit CliJob(CliRequest request);
  int run();

 private:
  int connect();
  int openPort();  // the port given with --port
  int discover();  // the device found on the USB bus
  // Downloads one item of the printed list (1-based) and says how it ended.
  Outcome download(bool voice, int item);
  // Runs the event loop (the session timer ticking) until done() holds when the job's
  // handlers wake it, or the time runs out.
  bool waitUntil(const std::function<bool()> &done, int timeoutMs);
  // Something waitUntil may be waiting for has happened.
  void wake();
  // Keeps an operation's outcome for waitForOutcome.
  OutcomeHandler keepOutcome();
  // Waits for the operation under way to end; none when the time ran out.
  std::optional<Outcome> waitForOutcome(int timeoutMs);
  // One whole session tick, as a diver pauses between steps: the device's answer to the
  // "#detail" that ends a listing or a download arrives before the next request.
  void pause();
  // The device's identity line: "Model QM482, firmware ..., SN.28417305".
  void printIdentity();
  void printLists();
  // What the window would say in a box, as one line on stderr.
  void tell(const QString &text);
  // Saves everything new on the device and says what it did.
  int sync();
  void showProgress();

  CliRequest request_;
  DeviceStack stack_;
  const bool interactive_;   // stderr is a terminal: a progress line may need clearing
  bool identified_ = false;  // the device said which model it is
  std::unique_ptr<DeviceDiscovery> discovery_;  // goes before the session it opens ports on
  std::optional<Outcome> outcome_;              // the last operation's, until taken
  std::function<void()> wake_;                  // while waiting: ends the wait when done
  QElapsedTimer transferClock_;                 // since the current clip was asked for
};
