#include "DevicePicture.h"

#include <QPainter>
#include <QPainterPath>

QPixmap DevicePicture(int height) {
  const qreal s = height / 200.0;
  QPixmap picture(QSize(int(260 * s), height));
  picture.fill(Qt::transparent);
  QPainter p(&picture);
  p.setRenderHint(QPainter::Antialiasing);
  p.scale(s, s);

  // The cable, curling from the device's foot to the plug.
  QPainterPath cable(QPointF(95, 170));
  cable.cubicTo(QPointF(95, 215), QPointF(200, 205), QPointF(215, 140));
  p.setPen(QPen(QColor(60, 60, 60), 6, Qt::SolidLine, Qt::RoundCap));
  p.drawPath(cable);
  p.setPen(Qt::NoPen);
  p.setBrush(QColor(90, 90, 90));
  p.drawRoundedRect(QRectF(205, 100, 20, 42), 4, 4);
  p.setBrush(QColor(190, 190, 190));
  p.drawRect(QRectF(209, 84, 12, 18));

  // The device: a round body, a dark bezel, the screen with a depth, two buttons.
  p.setBrush(QColor(235, 120, 30));
  p.drawEllipse(QPointF(95, 95), 78, 78);
  p.setBrush(QColor(35, 35, 40));
  p.drawEllipse(QPointF(95, 95), 62, 62);
  p.setBrush(QColor(170, 215, 200));
  p.drawRoundedRect(QRectF(55, 62, 80, 60), 8, 8);
  p.setPen(QColor(20, 40, 35));
  QFont font = p.font();
  font.setPixelSize(22);
  font.setBold(true);
  p.setFont(font);
  p.drawText(QRectF(55, 64, 80, 32), Qt::AlignCenter, QStringLiteral("18.3m"));
  font.setPixelSize(14);
  font.setBold(false);
  p.setFont(font);
  p.drawText(QRectF(55, 92, 80, 26), Qt::AlignCenter, QStringLiteral("QM482"));
  p.setPen(Qt::NoPen);
  p.setBrush(QColor(200, 200, 205));
  p.drawEllipse(QPointF(22, 60), 8, 8);
  p.drawEllipse(QPointF(22, 130), 8, 8);
  return picture;
}
