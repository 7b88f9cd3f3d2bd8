#pragma once

#include <QFile>
#include <QString>
#include <functional>
#include <memory>
#include <mutex>

#include "Session.h"
#include "SupervisionTimer.h"
#include "VoiceIndex.h"

// One clip from the device into a WAV file, from the request to the file: "vh" or "vr" once the
// line is quiet, the bytes into the temporary file, acknowledged with "vx" in windows of
// 2040 bytes on newer firmware, watched every 0.1 s (the progress, the clip ending when
// every byte is there, a stall after 50 ticks without bytes), and the device's pacing tuned
// with "#cdcwait": one level down after a clean clip, one up (and the clip fetched again,
// at most twice) after a stall. The level is kept for the whole run. Installs its handlers
// into the session it is given; made on the main thread, before the port opens.
class ClipDownload {
 public:
  ClipDownload(Session &session, const Guarded<VoiceIndexState> &index,
               std::unique_ptr<SupervisionTimer> timer);
  ~ClipDownload();
  ClipDownload(const ClipDownload &) = delete;
  ClipDownload &operator=(const ClipDownload &) = delete;

  // Downloads the clip of the voice index entry (1-based, as the list's numbers give it)
  // as a WAV file; done hears how it ended, on the main thread. Refused at once while the
  // session is not idle or the storage folders cannot be made.
  void start(int32_t entry, OutcomeHandler done);

  // Whether the file at path holds a recording other than the clip of entry (its index
  // text); such a file is never replaced. None: every name is free, as without a library.
  std::function<bool(const QString &path, const QString &entry)> nameTakenByAnother;

 private:
  // Requests the clip being downloaded (main thread); also its retry after "#cdcwait".
  void request();
  void receiveClip(char *bytes, size_t length);  // receive thread
  // Appends the bytes that arrived since the last write to the temporary file; fileMutex_
  // held. A write that fails stops the clip's count where the file ends.
  void writeArrived();
  // The bytes of the clip that are in the temporary file, every arrived one written first.
  int64_t receivedInFile();
  void startWatching();
  void watchTick();  // every 0.1 s while the clip streams in (main thread)
  // The device's answer to "#cdcwait" (receive thread).
  void cdcwaitReply(const char *text);
  // Ends a complete clip: closes the file and writes the WAV file; the outcome says
  // whether it was saved.
  Outcome makeWaveFile();
  // Closes the temporary clip file; bytes arriving later are dropped.
  void closeClipFile();
  void fail(Failure failure, const QString &sentence);
  // Ends the clip as failed, its file closed and the controls back.
  void giveUp(Failure failure, const char *key);

  Session &session_;
  SessionContext &context_;
  const Guarded<VoiceIndexState> &index_;
  std::unique_ptr<SupervisionTimer> timer_;
  QString waveFileName_;  // main thread
  int32_t entry_ = 0;     // the index entry being downloaded; main thread
  // The port's reads are a few hundred bytes at a time; they reach the file in chunks of
  // this size, and at every watch tick, so that a clip costs a few writes a second.
  static constexpr qsizetype kWriteChunkBytes = 16384;
  std::mutex fileMutex_;
  // Opened on the main thread, written on both; the state below is guarded by fileMutex_.
  std::unique_ptr<QFile> clipFile_;
  QByteArray unwritten_;      // arrived, counted, not yet in the file
  bool writeFailed_ = false;  // the file refused bytes: nothing more is counted
};
