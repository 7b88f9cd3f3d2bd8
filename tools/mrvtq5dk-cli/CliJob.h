#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QString>
#include <functional>

#include "DeviceDiscovery.h"
#include "LogTransfer.h"
#include "Session.h"
#include "TerminalWindow.h"
#include "VoiceTransfer.h"

// Exit statuses of mrvtq5dk-cli.
enum CliStatus : int {
  kCliOk = 0,
  kCliUsage = 2,
  kCliNoDevice = 3,
  kCliWrongModel = 4,
  kCliTransferFailed = 5,
  kCliCannotWrite = 6,
};

struct CliRequest {
  QString verb;    // list, download-voice, download-log
  QString port;    // empty: find the device on the USB bus
  QString output;  // in place of the Downloads folder; empty for it
  QString range = QStringLiteral("5 years");
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
  int downloadVoice(int item);
  int downloadLog(int item);
  // Runs the event loop (the session timer ticking) until done() or the time runs out.
  bool waitUntil(const std::function<bool()> &done, int timeoutMs);
  // One whole session tick, as a diver pauses between steps: the device's answer to the
  // "#detail" that ends a listing or a download arrives before the next request.
  void pause();
  int failureOf(const QStringList &messages) const;
  void printLists() const;
  void showProgress();

  CliRequest request_;
  TerminalWindow window_;
  Session session_;
  VoiceTransfer voice_;
  LogTransfer logs_;
  std::unique_ptr<DeviceDiscovery> discovery_;  // goes before the session it opens ports on
  QStringList messages_;
  QElapsedTimer transferClock_;  // since the current clip was asked for
};
