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

QString Describe(const WavePcm &wave, const QString &reason) {
  switch (wave.error) {
    case WaveError::None:
      break;
    case WaveError::Unreadable:
      return Localized("player_cannot_read").arg(reason);
    case WaveError::NotWave:
      return Localized("player_not_wave");
    case WaveError::Unplayable:
      return Localized("player_not_playable").arg(DescribeWaveFormat(wave.format));
  }
  return {};
}

QAudioFormat::SampleFormat SampleFormat(WaveSamples samples) {
  switch (samples) {
    case WaveSamples::Unsigned8:
      return QAudioFormat::UInt8;
    case WaveSamples::Signed16:
      break;
    case WaveSamples::Signed32:
      return QAudioFormat::Int32;
    case WaveSamples::Float32:
      return QAudioFormat::Float;
  }
  return QAudioFormat::Int16;
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
    error_ = Describe(wave, file.errorString());
    notify();
    return false;
  }
  pcm_ = wave.pcm;
  format_.setSampleRate(wave.format.sampleRate);
  format_.setChannelCount(wave.format.channels);
  format_.setSampleFormat(SampleFormat(wave.samples));
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
  if (!sink_ || sink_->format() != format_ || sinkDevice_ != output.id()) {
    // An output is stopped before it goes, and it goes from the event loop: its
    // destructor runs the event loop itself.
    if (sink_) sink_.release()->deleteLater();
    sink_ = std::make_unique<QAudioSink>(output, format_);
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
  return ms * format_.sampleRate() / 1000 * format_.bytesPerFrame();
}

qint64 ClipPlayer::bytesPerSecond() const {
  return qMax<qint64>(1, qint64(format_.sampleRate()) * format_.bytesPerFrame());
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
