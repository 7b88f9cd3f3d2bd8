#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QSet>
#include <QVariantMap>
#include <QVector>
#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>

#include "SimContents.h"
#include "WakePipe.h"

namespace sim {

// How the link behaves and how it misbehaves on purpose.
struct Options {
  int64_t bytesPerSecond = 0;  // 0: as fast as the pty takes them
  int latencyMs = 0;           // before each reply begins
  int splitGapMs = 40;         // between the pieces of a split reply
  uint32_t seed = 1;           // for garbage bytes
  bool echoCommands = false;   // print each command received on stderr

  int64_t stallAfterBytes = -1;                 // of each clip; -1 never
  int stallResumeMs = -1;                       // -1: the stall lasts for good
  int extraBytes = 0;                           // sent after each clip
  QMap<QByteArray, QVector<int>> splitReplies;  // command name -> offsets to split at
  QSet<QByteArray> garbageReplies;              // command names answered with garbage
  QSet<QByteArray> silentCommands;              // command names never answered
  bool longIndex = false;                       // a voice index of more than 4096 bytes
  int64_t hangupAfterBytes = -1;                // clip and page bytes before hanging up
};

// Reads options from a map keyed by the long option names of qm482-sim (the command line
// and the "faults" object of a scenario file share them). Returns an error text.
QString ApplyOptions(const QVariantMap &values, Options &options, Contents &contents);

// The device side of the wire protocol, served on the master side of a pseudo-terminal.
class DeviceSimulator {
 public:
  DeviceSimulator(Contents contents, Options options);
  ~DeviceSimulator();
  DeviceSimulator(const DeviceSimulator &) = delete;
  DeviceSimulator &operator=(const DeviceSimulator &) = delete;

  // Serves until stop() or a hang-up fault; returns then. Waits while nobody holds the
  // other side open. Closes masterFd on a hang-up only.
  void serve(int masterFd);
  void stop();  // from any thread

  // For tests and the log: every command received, without its line end.
  QList<QByteArray> commands() const;
  // When each of them arrived, in milliseconds of the steady clock.
  QList<int64_t> commandTimesMs() const;
  bool hungUp() const { return hungUp_.load(); }

 private:
  struct Segment {
    QByteArray bytes;
    int64_t notBeforeMs = 0;
    bool payload = false;  // clip or page bytes, counted for the hang-up fault
  };
  struct ClipStream {
    QByteArray audio;
    qsizetype sent = 0;
    bool acknowledged = false;  // "vh": windows of 2040 bytes, each released by "vx"
    int64_t credit = 0;
    bool stalled = false;
    bool stallTaken = false;  // a clip stalls once
    int64_t resumeAtMs = -1;
    bool extraSent = false;
  };

  void handleInput(const char *bytes, size_t length);
  void handleCommand(const QByteArray &line);
  void reply(const QByteArray &name, QByteArray bytes, bool payload = false);
  void startClip(const QByteArray &argument, bool acknowledged);
  void feedClip(int64_t nowMs);
  // Writes what the rate and the schedule allow; returns false once hung up.
  bool writeSome(int masterFd, int64_t nowMs);
  int64_t nextWakeMs(int64_t nowMs) const;

  Contents contents_;
  Options options_;
  QByteArray input_;
  std::deque<Segment> queue_;
  ClipStream clip_;
  bool clipActive_ = false;
  int64_t payloadSent_ = 0;
  int64_t hangupAtMs_ = -1;
  double tokens_ = 0;
  int64_t lastRefillMs_ = 0;
  uint32_t garbageState_;
  WakePipe stopPipe_;

  mutable std::mutex commandsMutex_;
  QList<QByteArray> commands_;
  QList<int64_t> commandTimesMs_;
  std::atomic<bool> hungUp_{false};
};

}  // namespace sim
