#include "PlayerBar.h"

#include <QFile>
#include <QHBoxLayout>
#include <QLabel>
#include <QMediaDevices>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>

#include "Localization.h"
#include "WavePcm.h"

PlayerBar::PlayerBar(QWidget *parent)
    : QWidget(parent),
      devices_(new QMediaDevices(this)),
      button_(new QPushButton(this)),
      title_(new QLabel(this)),
      slider_(new QSlider(Qt::Horizontal, this)),
      time_(new QLabel(this)),
      output_(ClipPlayer::outputAvailable()) {
  button_->setObjectName("playButton");
  slider_->setObjectName("playPosition");
  time_->setObjectName("playTime");
  title_->setObjectName("playTitle");
  auto *row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(button_);
  row->addWidget(title_);
  row->addWidget(slider_, 1);
  row->addWidget(time_);

  player_.changed = [this] { refresh(); };
  connect(button_, &QPushButton::clicked, this, [this] { toggle(); });
  // A click on the groove or a key moves the value at once; a drag seeks when let go.
  connect(slider_, &QSlider::valueChanged, this, [this](int ms) {
    if (!slider_->isSliderDown() && player_.playing()) player_.seek(ms);
    refresh();
  });
  connect(slider_, &QSlider::sliderReleased, this, [this] {
    if (player_.playing()) player_.seek(slider_->value());
  });
  connect(devices_, &QMediaDevices::audioOutputsChanged, this, [this] {
    output_ = ClipPlayer::outputAvailable();
    refresh();
  });
  setClip(std::nullopt, {});
}

void PlayerBar::setClip(std::optional<QString> wavPath, QString title) {
  player_.stop();
  wavPath_ = std::move(wavPath);
  clipMs_ = 0;
  if (wavPath_) {
    QFile file(*wavPath_);
    if (file.open(QIODevice::ReadOnly)) clipMs_ = ReadWavePcm(file).durationMs();
  }
  title_->setText(title);
  {
    const QSignalBlocker quiet(slider_);
    slider_->setRange(0, static_cast<int>(clipMs_));
    slider_->setValue(0);
  }
  refresh();
}

void PlayerBar::showFetch(const QString &title, int percent) {
  setClip(std::nullopt, Localized("player_fetching").arg(title).arg(percent));
}

void PlayerBar::toggle() {
  if (player_.playing()) return player_.stop();
  if (!wavPath_) return;
  const qint64 from = slider_->value() < slider_->maximum() ? slider_->value() : 0;
  player_.play(*wavPath_, from);
  if (player_.durationMs() > 0) clipMs_ = player_.durationMs();  // the file may have changed
  refresh();
}

QString PlayerBar::FormatTime(qint64 ms) {
  const qint64 seconds = qMax<qint64>(0, ms) / 1000;
  return QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

void PlayerBar::refresh() {
  const bool output = output_;
  const bool playing = player_.playing();
  button_->setText(Localized(playing ? "player_stop" : "player_play"));
  button_->setEnabled(playing || (wavPath_ && output));
  button_->setToolTip(!output && !playing ? Localized("player_no_output") : QString());
  slider_->setEnabled(wavPath_.has_value() && clipMs_ > 0);

  {
    const QSignalBlocker quiet(slider_);
    slider_->setRange(0, static_cast<int>(clipMs_));
    // Playing moves the slider; at the end of playing it goes back to the start.
    if (playing && !slider_->isSliderDown()) slider_->setValue(int(player_.positionMs()));
    if (!playing && wasPlaying_) slider_->setValue(0);
  }
  wasPlaying_ = playing;
  const qint64 position = slider_->value();
  const QString error = player_.error();
  time_->setText(error.isEmpty() ? FormatTime(position) + " / " + FormatTime(clipMs_) : error);
  time_->setToolTip(error);
}
