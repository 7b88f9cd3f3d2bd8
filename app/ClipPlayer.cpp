#include "ClipPlayer.h"

#include <QAudioDevice>
#include <QAudioFormat>
#include <QAudioSink>
#include <QFile>
#include <QMediaDevices>

#include "Localization.h"
#include "WavePcm.h"

namespace {

constexpr int kTickMs = 100;
constexpr qint64 kDrainMarginMs = 500;

QString Describe(WaveError error, const QString &reason) {
  switch (error) {
    case WaveError::None:
      break;
    case WaveError::Unreadable:
      return Localized("player_cannot_read").arg(reason);
    case WaveError::NotWave:
      return Localized("player_not_wave");
    case WaveError::NotPcm16:
      return Localized("player_not_pcm16");
  }
  return {};
}

}  // namespace

ClipPlayer::ClipPlayer(QObject *parent) : QObject(parent) {
  ticker_.setInterval(kTickMs);
  connect(&ticker_, &QTimer::timeout, this, [this] { tick(); });
}

ClipPlayer::~ClipPlayer() {
  changed = nullptr;
  end({});
  if (sink_) sink_->disconnect(this);
  sink_.reset();  // stopped, before the buffer it read from goes
}

bool ClipPlayer::outputAvailable() {
  return !QMediaDevices::defaultAudioOutput().isNull();
}

bool ClipPlayer::play(const QString &wavPath, qint64 fromMs) {
  stop();
  error_.clear();
  pcm_.clear();
  durationMs_ = 0;

  QFile file(wavPath);
  WavePcm wave;
  if (!file.open(QIODevice::ReadOnly)) {
    wave.error = WaveError::Unreadable;
  } else {
    wave = ReadWavePcm(file);
    if (file.error() != QFileDevice::NoError) wave.error = WaveError::Unreadable;
  }
  if (!wave.ok()) {
    error_ = Describe(wave.error, file.errorString());
    notify();
    return false;
  }
  pcm_ = wave.pcm;
  bytesPerFrame_ = wave.bytesPerFrame();
  sampleRate_ = wave.sampleRate;
  channels_ = wave.channels;
  durationMs_ = wave.durationMs();
  const bool started = start(fromMs);
  notify();
  return started;
}

bool ClipPlayer::start(qint64 fromMs) {
  // A running output is stopped before anything else: it reads the buffer until then.
  if (sink_) sink_->stop();
  playing_ = false;
  const QAudioDevice output = QMediaDevices::defaultAudioOutput();
  if (output.isNull()) {
    error_ = Localized("player_no_output");
    return false;
  }
  QAudioFormat format;
  format.setSampleRate(sampleRate_);
  format.setChannelCount(channels_);
  format.setSampleFormat(QAudioFormat::Int16);
  if (!sink_ || sink_->format() != format || sinkDevice_ != output.id()) {
    // An output is stopped before it goes, and it goes from the event loop: its
    // destructor runs the event loop itself.
    if (sink_) sink_.release()->deleteLater();
    sink_ = std::make_unique<QAudioSink>(output, format);
    sinkDevice_ = output.id();
    // Looked at from the event loop, never inside the output's own signal.
    connect(
        sink_.get(), &QAudioSink::stateChanged, this, [this] { tick(); }, Qt::QueuedConnection);
  }

  startMs_ = qBound<qint64>(0, fromMs, durationMs_);
  buffer_.close();
  buffer_.setData(pcm_);
  buffer_.open(QIODevice::ReadOnly);
  buffer_.seek(bytesAt(startMs_));
  sink_->start(&buffer_);
  if (sink_->error() != QAudio::NoError || sink_->state() == QAudio::StoppedState) {
    sink_->stop();
    error_ = Localized("player_no_output");
    return false;
  }
  playing_ = true;
  idle_.invalidate();
  ticker_.start();
  return true;
}

void ClipPlayer::stop() {
  if (!playing_) return error_.clear();
  end({});
}

void ClipPlayer::seek(qint64 ms) {
  const qint64 to = qBound<qint64>(0, ms, durationMs_);
  if (!playing_) {
    stoppedAtMs_ = to;
  } else if (!start(to)) {
    end(error_);
    return;
  }
  notify();
}

qint64 ClipPlayer::positionMs() const {
  if (!playing_) return stoppedAtMs_;
  return qMin(durationMs_, startMs_ + sink_->processedUSecs() / 1000);
}

qint64 ClipPlayer::bytesAt(qint64 ms) const {
  return ms * sampleRate_ / 1000 * bytesPerFrame_;
}

qint64 ClipPlayer::bytesPerSecond() const {
  return qMax<qint64>(1, qint64(sampleRate_) * bytesPerFrame_);
}

void ClipPlayer::tick() {
  if (!playing_) return;
  const QAudio::State state = sink_->state();
  if (state == QAudio::IdleState && buffer_.atEnd()) {
    // Every byte is with the output, which still holds the last of them: the end is when
    // it has played them, or when it has been idle longer than its buffer lasts.
    const qint64 fedUs = (pcm_.size() - bytesAt(startMs_)) * 1'000'000 / bytesPerSecond();
    if (!idle_.isValid()) idle_.start();
    const qint64 bufferMs = sink_->bufferSize() * 1000 / bytesPerSecond();
    if (sink_->processedUSecs() >= fedUs || idle_.elapsed() > bufferMs + kDrainMarginMs) {
      return end({});
    }
  } else {
    idle_.invalidate();
  }
  if (state == QAudio::StoppedState) {
    return end(sink_->error() == QAudio::NoError ? QString() : Localized("player_output_lost"));
  }
  notify();
}

void ClipPlayer::end(const QString &error) {
  ticker_.stop();
  playing_ = false;
  if (sink_) sink_->stop();
  buffer_.close();
  stoppedAtMs_ = 0;
  error_ = error;
  notify();
}

void ClipPlayer::notify() {
  if (changed) changed();
}
