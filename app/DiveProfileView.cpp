#include "DiveProfileView.h"

#include <QHelpEvent>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>
#include <cmath>

#include "ListRows.h"
#include "Localization.h"
#include "PageDamage.h"

namespace {

constexpr int kGap = 4;         // between a label and what it labels
constexpr int kClipStrip = 16;  // height of the strip above the plot that holds the clips
constexpr double kMarkerSize = 11;
constexpr double kHitRadius = 8;  // how close the mouse must be to a marker or clip mark

QString TickText(double value, double step) {
  return QString::number(value, 'f', step < 1 ? 1 : 0);
}

// A small triangle standing on its point just above the marked sample.
QPolygonF MarkerShape(QPointF at) {
  const double half = kMarkerSize / 2;
  return QPolygonF({at + QPointF(0, -2), at + QPointF(-half, -2 - kMarkerSize),
                    at + QPointF(half, -2 - kMarkerSize)});
}

}  // namespace

DiveProfileView::DiveProfileView(QWidget *parent) : QWidget(parent) {
  setMouseTracking(true);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setAutoFillBackground(false);
}

QColor DiveProfileView::BandColor(AscentBand band) {
  switch (band) {
    case AscentBand::Red:
      return QColor(215, 30, 30);
    case AscentBand::Orange:
      return QColor(245, 130, 0);
    case AscentBand::Yellow:
      return QColor(225, 190, 0);
    case AscentBand::Green:
      break;
  }
  return QColor(30, 150, 60);
}

QColor DiveProfileView::TemperatureColor() {
  return QColor(140, 60, 175);
}

QColor DiveProfileView::MarkerColor() {
  return QColor(200, 0, 110);
}

QColor DiveProfileView::ClipColor() {
  return QColor(0, 125, 130);
}

QSize DiveProfileView::sizeHint() const {
  return {640, 320};
}

QSize DiveProfileView::minimumSizeHint() const {
  return {320, 180};
}

void DiveProfileView::setDive(std::optional<DiveRecord> dive) {
  dive_ = std::move(dive);
  mouse_.reset();
  relayOut();
}

void DiveProfileView::setClips(QList<ClipRow> clips) {
  clipRows_ = std::move(clips);
  relayOut();
}

bool DiveProfileView::hasProfile() const {
  return dive_ && !dive_->damage && !dive_->samples.isEmpty();
}

void DiveProfileView::relayOut() {
  const QFontMetrics metrics = fontMetrics();
  const int line = metrics.height();
  const int left = metrics.horizontalAdvance(QStringLiteral("000")) + 2 * kGap;
  const int right = metrics.horizontalAdvance(QStringLiteral("-00.0")) + 2 * kGap;
  const QRectF plot =
      QRectF(rect()).adjusted(left, line + kGap + kClipStrip, -right, -(2 * line + 2 * kGap));
  geometry_ = hasProfile() ? LayOutProfile(*dive_, plot) : ProfileGeometry{};
  QList<QDateTime> starts;
  for (const ClipRow &clip : clipRows_) starts.append(clip.start);
  clips_ = hasProfile() ? PlaceClips(*dive_, geometry_, starts) : QList<ClipMark>{};
  update();
}

QRectF DiveProfileView::clipStrip() const {
  const QRectF &plot = geometry_.plot;
  return QRectF(plot.left(), plot.top() - kClipStrip, plot.width(), kClipStrip);
}

std::optional<ClipMark> DiveProfileView::clipAt(QPointF point) const {
  const QRectF &plot = geometry_.plot;
  if (point.y() < clipStrip().top() || point.y() > plot.bottom()) return std::nullopt;
  std::optional<ClipMark> nearest;
  for (const ClipMark &mark : clips_) {
    const double off = std::abs(mark.x - point.x());
    if (off <= kHitRadius && (!nearest || off < std::abs(nearest->x - point.x()))) nearest = mark;
  }
  return nearest;
}

const WarningMarker *DiveProfileView::markerAt(QPointF point) const {
  const WarningMarker *nearest = nullptr;
  double best = kHitRadius;
  for (const WarningMarker &marker : geometry_.markers) {
    const QPointF centre = marker.at - QPointF(0, 2 + kMarkerSize / 2);
    const double off = std::hypot(centre.x() - point.x(), centre.y() - point.y());
    if (off <= best) best = off, nearest = &marker;
  }
  return nearest;
}

void DiveProfileView::resizeEvent(QResizeEvent *event) {
  QWidget::resizeEvent(event);
  relayOut();
}

void DiveProfileView::mouseMoveEvent(QMouseEvent *event) {
  mouse_ = event->position();
  setCursor(clipAt(*mouse_) ? Qt::PointingHandCursor : Qt::ArrowCursor);
  update();
}

void DiveProfileView::mousePressEvent(QMouseEvent *event) {
  if (event->button() == Qt::LeftButton) {
    if (const std::optional<ClipMark> mark = clipAt(event->position())) {
      if (clipClicked) clipClicked(mark->index);
      return;
    }
  }
  QWidget::mousePressEvent(event);
}

void DiveProfileView::leaveEvent(QEvent *event) {
  mouse_.reset();
  update();
  QWidget::leaveEvent(event);
}

bool DiveProfileView::event(QEvent *event) {
  if (event->type() == QEvent::FontChange) relayOut();
  if (event->type() != QEvent::ToolTip) return QWidget::event(event);
  auto *help = static_cast<QHelpEvent *>(event);
  QString text;
  if (const WarningMarker *marker = markerAt(help->pos())) {
    const DiveSample &s = dive_->samples[marker->sample];
    text = QStringLiteral("%1  %2, %3\n%4")
               .arg(Localized("summary_warnings"), ElapsedText(s.seconds),
                    MetresText(s.depthMetres()), marker->words.join(u'\n'));
  } else if (const std::optional<ClipMark> mark = clipAt(help->pos())) {
    const ClipRow &clip = clipRows_[mark->index];
    const auto seconds = static_cast<int>(dive_->entry.secsTo(clip.start));
    text = Localized("profile_clip").arg(ElapsedText(seconds), ClipLengthText(clip.bytes));
  }
  if (text.isEmpty()) {
    QToolTip::hideText();
    event->ignore();
  } else {
    QToolTip::showText(help->globalPos(), text, this);
  }
  return true;
}

void DiveProfileView::paintEvent(QPaintEvent *) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().base());
  if (!hasProfile()) {
    painter.setPen(palette().color(QPalette::PlaceholderText));
    const QString why = !dive_ ? Localized("profile_no_dive")
                        : dive_->damage
                            ? Localized("profile_damaged").arg(DamageText(*dive_->damage))
                            : Localized("profile_no_samples");
    painter.drawText(rect().adjusted(2 * kGap, 0, -2 * kGap, 0), Qt::AlignCenter | Qt::TextWordWrap,
                     why);
    return;
  }
  painter.setRenderHint(QPainter::Antialiasing);
  paintAxes(painter);
  paintProfile(painter);
  paintClips(painter);
  paintCrosshair(painter);
}

void DiveProfileView::paintAxes(QPainter &painter) const {
  const ProfileGeometry &g = geometry_;
  const QRectF &plot = g.plot;
  const QFontMetrics metrics = fontMetrics();
  const int line = metrics.height();
  const QColor text = palette().color(QPalette::Text);
  const QColor grid = palette().color(QPalette::Mid).lighter(150);

  painter.setPen(QPen(grid, 1));
  for (double minute : g.minutes.ticks()) {
    const double x = g.xAtSeconds(minute * 60);
    painter.drawLine(QPointF(x, plot.top()), QPointF(x, plot.bottom()));
  }
  for (double metres : g.metres.ticks()) {
    const double y = g.yAtMetres(metres);
    painter.drawLine(QPointF(plot.left(), y), QPointF(plot.right(), y));
  }

  painter.setPen(text);
  for (double minute : g.minutes.ticks()) {
    const double x = g.xAtSeconds(minute * 60);
    painter.drawText(QRectF(x - 40, plot.bottom() + kGap, 80, line), Qt::AlignHCenter,
                     TickText(minute, g.minutes.step));
  }
  for (double metres : g.metres.ticks()) {
    const double y = g.yAtMetres(metres);
    painter.drawText(QRectF(0, y - line / 2.0, plot.left() - kGap, line),
                     Qt::AlignRight | Qt::AlignVCenter, TickText(metres, g.metres.step));
  }
  painter.drawText(QRectF(plot.left(), plot.bottom() + kGap + line, plot.width(), line),
                   Qt::AlignHCenter, Localized("profile_axis_time"));
  painter.drawText(QRectF(kGap, 0, width() / 2.0, line), Qt::AlignLeft | Qt::AlignVCenter,
                   Localized("profile_axis_depth"));

  painter.setPen(TemperatureColor());
  for (double celsius : g.celsius.ticks()) {
    const double y = g.yAtCelsius(celsius);
    painter.drawText(QRectF(plot.right() + kGap, y - line / 2.0, width() - plot.right(), line),
                     Qt::AlignLeft | Qt::AlignVCenter, TickText(celsius, g.celsius.step));
  }
  painter.drawText(QRectF(width() / 2.0, 0, width() / 2.0 - kGap, line),
                   Qt::AlignRight | Qt::AlignVCenter, Localized("profile_axis_temperature"));

  painter.setPen(QPen(text, 1));
  painter.setBrush(Qt::NoBrush);
  painter.drawRect(plot);
}

void DiveProfileView::paintProfile(QPainter &painter) const {
  const ProfileGeometry &g = geometry_;
  const QRectF &plot = g.plot;
  painter.save();
  painter.setClipRect(plot.adjusted(-kMarkerSize, -kMarkerSize, kMarkerSize, kMarkerSize));

  // The water the diver was in: from the surface down to the depth line.
  QPainterPath water;
  water.moveTo(g.depthLine.first().x(), plot.top());
  for (const QPointF &point : g.depthLine) water.lineTo(point);
  water.lineTo(g.depthLine.last().x(), plot.top());
  water.closeSubpath();
  QLinearGradient deep(plot.topLeft(), plot.bottomLeft());
  deep.setColorAt(0, QColor(215, 236, 250));
  deep.setColorAt(1, QColor(120, 170, 220));
  painter.fillPath(water, deep);

  painter.setPen(QPen(TemperatureColor(), 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPolyline(g.temperatureLine.constData(), static_cast<int>(g.temperatureLine.size()));

  for (const DepthRun &run : g.runs) {
    painter.setPen(QPen(BandColor(run.band), 2.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(run.points.constData(), static_cast<int>(run.points.size()));
  }

  painter.setPen(QPen(MarkerColor().darker(160), 1));
  painter.setBrush(MarkerColor());
  for (const WarningMarker &marker : g.markers) painter.drawPolygon(MarkerShape(marker.at));
  painter.restore();
}

void DiveProfileView::paintClips(QPainter &painter) const {
  const QRectF strip = clipStrip();
  for (const ClipMark &mark : clips_) {
    painter.setPen(QPen(ClipColor(), 1, Qt::DashLine));
    painter.drawLine(QPointF(mark.x, strip.bottom()), QPointF(mark.x, geometry_.plot.bottom()));
    // A small flag on the timeline, the part to click.
    painter.setPen(Qt::NoPen);
    painter.setBrush(ClipColor());
    painter.drawRoundedRect(QRectF(mark.x - 5, strip.top() + 2, 10, strip.height() - 6), 2, 2);
    painter.drawPolygon(
        QPolygonF({QPointF(mark.x - 3, strip.bottom() - 4.5),
                   QPointF(mark.x + 3, strip.bottom() - 4.5), QPointF(mark.x, strip.bottom())}));
  }
}

void DiveProfileView::paintCrosshair(QPainter &painter) const {
  const QRectF &plot = geometry_.plot;
  if (!mouse_ || !plot.contains(*mouse_)) return;
  const std::optional<ProfileReadout> read = ReadProfileAt(*dive_, geometry_, mouse_->x());
  if (!read) return;
  const QColor text = palette().color(QPalette::Text);
  painter.setPen(QPen(text, 1, Qt::DotLine));
  painter.drawLine(QPointF(read->at.x(), plot.top()), QPointF(read->at.x(), plot.bottom()));
  painter.setPen(QPen(text, 1.5));
  painter.setBrush(palette().base());
  painter.drawEllipse(read->at, 3.5, 3.5);
  painter.setPen(QPen(TemperatureColor(), 1.5));
  painter.drawEllipse(geometry_.temperatureLine[read->sample], 3, 3);

  const QString readout =
      Localized("profile_readout")
          .arg(ElapsedText(read->seconds), MetresText(read->metres), CelsiusText(read->celsius));
  const QFontMetrics metrics = fontMetrics();
  QRectF box(0, plot.top() + kGap, metrics.horizontalAdvance(readout) + 2 * kGap,
             metrics.height() + kGap);
  // Beside the line, on whichever side has room.
  box.moveLeft(read->at.x() + box.width() + 2 * kGap <= plot.right()
                   ? read->at.x() + kGap
                   : std::max(plot.left(), read->at.x() - kGap - box.width()));
  QColor back = palette().color(QPalette::Base);
  back.setAlpha(225);
  painter.setPen(QPen(palette().color(QPalette::Mid), 1));
  painter.setBrush(back);
  painter.drawRoundedRect(box, 3, 3);
  painter.setPen(text);
  painter.drawText(box, Qt::AlignCenter, readout);
}
