#pragma once

#include <QDateTime>
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QStringList>
#include <optional>

#include "DiveRecord.h"

// The geometry of a dive's profile plot, worked out without painting: scales and ticks,
// the depth line (depth downwards from the top edge) split by ascent rate, the water
// temperature on its own scale, warning markers and voice clips on the timeline. The view
// paints what these functions give; tests check them directly.

// A scale from low to high in steps that read well; ticks fall on every step.
struct ProfileAxis {
  double low = 0;
  double high = 1;
  double step = 1;
  QList<double> ticks() const;
};

// A scale over [low, high] with the smallest step of the list (or a multiple of its last
// step by 10s) that needs at most eight ticks; the ends are rounded out to whole steps.
ProfileAxis NiceAxis(double low, double high, const QList<double> &steps);

// How fast the diver came up, in metres a minute, as the line's colours tell it: over 18
// red, over 9 orange, over 4 yellow, anything slower (and every descent) green.
enum class AscentBand { Green, Yellow, Orange, Red };
AscentBand AscentBandFor(double ascentMetresPerMinute);

// Consecutive samples of one band, as one polyline (neighbouring runs share their end).
struct DepthRun {
  AscentBand band = AscentBand::Green;
  QList<QPointF> points;
};

// A sample with warnings set, at its point on the depth line.
struct WarningMarker {
  int sample = 0;
  QPointF at;
  int32_t flags = 0;
  QStringList words;  // the flags in the reader's language
};

struct ProfileGeometry {
  QRectF plot;
  ProfileAxis minutes;             // time from entry, left to right
  ProfileAxis metres;              // depth, 0 at the top edge
  ProfileAxis celsius;             // water temperature, on the right-hand scale
  QList<QPointF> depthLine;        // one point per sample
  QList<QPointF> temperatureLine;  // one point per sample
  QList<DepthRun> runs;
  QList<WarningMarker> markers;

  double xAtSeconds(double seconds) const;
  double yAtMetres(double metres) const;
  double yAtCelsius(double celsius) const;
};

// Lays the dive out in plot. The time scale spans at least 30 minutes and the depth scale
// at least 30 m, each growing to hold the whole dive; a temperature that never changes
// gets a scale of 1 °C either side of it.
ProfileGeometry LayOutProfile(const DiveRecord &dive, const QRectF &plot);

// A voice clip recorded during the dive, by its place in the clip list.
struct ClipMark {
  int index = 0;
  double x = 0;
};

// The clips recorded during the dive (SecondsIntoDive), placed on the time scale.
QList<ClipMark> PlaceClips(const DiveRecord &dive, const ProfileGeometry &geometry,
                           const QList<QDateTime> &clipTimes);

// What the crosshair reads at x: the sample nearest in time.
struct ProfileReadout {
  int sample = 0;
  int seconds = 0;
  double metres = 0;
  double celsius = 0;
  QPointF at;  // the sample's point on the depth line
};
std::optional<ProfileReadout> ReadProfileAt(const DiveRecord &dive, const ProfileGeometry &geometry,
                                            double x);
