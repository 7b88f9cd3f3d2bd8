#pragma once

#include <QColor>
#include <QDateTime>
#include <QList>
#include <QWidget>
#include <functional>
#include <optional>

#include "DeviceState.h"
#include "DiveProfile.h"

// A dive's profile as a diver reads it: depth downwards from the surface with the water
// filled in, the depth line coloured by ascent rate, water temperature on the right-hand
// scale, warning markers that name their flags on hover, voice clips on the timeline that
// can be clicked, and a crosshair that reads time, depth and temperature under the mouse.
class DiveProfileView : public QWidget {
  Q_OBJECT

 public:
  explicit DiveProfileView(QWidget *parent = nullptr);

  void setDive(std::optional<DiveRecord> dive);
  // The device's clips (when each began, on the device's clock, and its audio bytes); the
  // ones made during the dive are marked, and their place in this list is what clipClicked
  // reports.
  void setClips(QList<ClipRow> clips);
  std::function<void(int clipIndex)> clipClicked;
  // Where the dive is drawn at the view's present size.
  const ProfileGeometry &profileGeometry() const { return geometry_; }

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

  // The colours the view paints with, for the window's legend and for tests.
  static QColor BandColor(AscentBand band);
  static QColor TemperatureColor();
  static QColor MarkerColor();
  static QColor ClipColor();

  // Whether a dive with samples is drawn (a damaged page never is), and how many clips are marked
  // on its timeline.
  bool hasProfile() const;
  int clipMarks() const { return int(clips_.size()); }

 protected:
  void paintEvent(QPaintEvent *event) override;
  void resizeEvent(QResizeEvent *event) override;
  void mouseMoveEvent(QMouseEvent *event) override;
  void mousePressEvent(QMouseEvent *event) override;
  void leaveEvent(QEvent *event) override;
  bool event(QEvent *event) override;

 private:
  void relayOut();
  QRectF clipStrip() const;
  std::optional<ClipMark> clipAt(QPointF point) const;
  const WarningMarker *markerAt(QPointF point) const;
  void paintAxes(QPainter &painter) const;
  void paintProfile(QPainter &painter) const;
  void paintClips(QPainter &painter) const;
  void paintCrosshair(QPainter &painter) const;

  std::optional<DiveRecord> dive_;
  QList<ClipRow> clipRows_;
  ProfileGeometry geometry_;
  QList<ClipMark> clips_;
  std::optional<QPointF> mouse_;
};
