#pragma once

#include <QString>
#include <QWidget>
#include <optional>

#include "ClipPlayer.h"

class QLabel;
class QMediaDevices;
class QPushButton;
class QSlider;

// Plays a saved clip: a play/stop button, the clip's title, a position slider that
// seeks, and "m:ss / m:ss". It needs only the clip's file, never the device. Without a
// sound output the button is disabled and its tooltip says why.
class PlayerBar : public QWidget {
 public:
  explicit PlayerBar(QWidget *parent = nullptr);

  // The clip the bar plays; none disables it. Ends what was playing.
  void setClip(std::optional<QString> wavPath, QString title);
  const std::optional<QString> &clip() const { return wavPath_; }
  // A clip on its way from the device, to play once it is saved: how far it has come.
  void showFetch(const QString &title, int percent);

  ClipPlayer &player() { return player_; }

  // "m:ss" of a time in milliseconds.
  static QString FormatTime(qint64 ms);

 private:
  void toggle();
  void refresh();

  ClipPlayer player_;
  std::optional<QString> wavPath_;
  qint64 clipMs_ = 0;  // the clip's length
  bool wasPlaying_ = false;
  QMediaDevices *devices_;
  QPushButton *button_;
  QLabel *title_;
  QSlider *slider_;
  QLabel *time_;
  bool output_;  // whether the system has a sound output, as of its last change
};
