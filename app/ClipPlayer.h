#pragma once

#include <QAudioFormat>
#include <QBuffer>
#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>
#include <memory>

class QAudioSink;

// Plays a voice clip (a WAV file; see ReadWavePcm for the formats) on the default sound output: the
// file's sound is read into memory and fed to the output from there. Main thread only.
class ClipPlayer : public QObject {
 public:
  explicit ClipPlayer(QObject *parent = nullptr);
  ~ClipPlayer() override;

  // Starts playing wavPath from fromMs, ending what was playing. False, with error() set,
  // when the file cannot be read or played or there is no sound output.
  bool play(const QString &wavPath, qint64 fromMs = 0);
  // Ends playing and forgets the last error; the position goes back to the start.
  void stop();
  // Moves the position within the clip last played; playing goes on from there.
  void seek(qint64 ms);

  bool playing() const { return playing_; }
  qint64 positionMs() const;
  qint64 durationMs() const { return durationMs_; }
  // Why the last play() failed, or why playing stopped before the end; empty otherwise.
  QString error() const { return error_; }

  // Called when playing starts or stops and as the position moves (about ten times a
  // second while playing).
  std::function<void()> changed;

  // Whether the system has a sound output to play on.
  static bool outputAvailable();

 private:
  bool start(qint64 fromMs);
  void tick();
  void end(const QString &error);
  void notify();
  qint64 bytesAt(qint64 ms) const;
  qint64 bytesPerSecond() const;

  QByteArray pcm_;
  QAudioFormat format_;  // of pcm_
  qint64 durationMs_ = 0;
  qint64 startMs_ = 0;      // where the running output began in the clip
  qint64 stoppedAtMs_ = 0;  // the position while not playing
  QString error_;
  QBuffer buffer_;
  bool playing_ = false;
  // Kept from one clip to the next while the output and format stay; after buffer_,
  // which it reads from while playing.
  std::unique_ptr<QAudioSink> sink_;
  QByteArray sinkDevice_;  // the output's id
  QTimer ticker_;
  QElapsedTimer idle_;  // since the output went idle with every byte fed
};
