#include <gtest/gtest.h>

#include <QApplication>
#include <QMouseEvent>
#include <QTimeZone>
#include <QToolTip>
#include <algorithm>

#include "DiveProfile.h"
#include "DiveProfileView.h"
#include "DiveSummary.h"
#include "LogIndex.h"
#include "SimContents.h"

namespace {

// 20:30 on the device's clock (UTC) is 05:30 the next morning in Japan.
const QDateTime kEntry(QDate(2023, 11, 5), QTime(20, 30), QTimeZone::utc());
const QRectF kPlot(40, 30, 600, 300);

sim::Dive Generated(int minutes, int maxDepthCm, int surfaceDeci = 268, int bottomDeci = 231) {
  return sim::GenerateDive(7, kEntry, minutes, 10, maxDepthCm, surfaceDeci, bottomDeci);
}

// The dive as the window gets it: the device's page, decoded.
DiveRecord Decoded(const sim::Dive &dive) {
  const QByteArray page = sim::DivePage(dive);
  return DecodeDive(&page);
}

TEST(DiveProfile, OnlyAFastAscentIsRed) {
  sim::Dive dive = Generated(45, 3000);
  const auto runsIn = [](const sim::Dive &d, AscentBand band) {
    QList<DepthRun> runs = LayOutProfile(Decoded(d), kPlot).runs;
    runs.removeIf([band](const DepthRun &run) { return run.band != band; });
    return runs;
  };
  // The generated ascent is 9 m a minute: coloured, but not red.
  EXPECT_TRUE(runsIn(dive, AscentBand::Red).isEmpty());
  EXPECT_FALSE(runsIn(dive, AscentBand::Orange).isEmpty() &&
               runsIn(dive, AscentBand::Yellow).isEmpty());
  // From 30 m to 6 m in one minute at the 20th, then straight back down.
  for (int i = 0; i <= 6; ++i) dive.profile[120 + i].depthCm = 3000 - 400 * i;
  const ProfileGeometry g = LayOutProfile(Decoded(dive), kPlot);
  const QList<DepthRun> red = runsIn(dive, AscentBand::Red);
  ASSERT_EQ(red.size(), 1);
  EXPECT_GE(red[0].points.first().x(), g.depthLine[119].x());
  EXPECT_LE(red[0].points.last().x(), g.depthLine[127].x());
}

TEST(DiveProfile, WarningMarkersTheCrosshairAndTheSummaryReadTheSamples) {
  sim::Dive dive = sim::GenerateContents(3, QDate(2023, 11, 20)).dives[5];  // a deco dive
  dive.profile[10].warnings = 0xC0;
  const DiveRecord record = Decoded(dive);
  const ProfileGeometry g = LayOutProfile(record, kPlot);
  ASSERT_EQ(g.markers.size(), 3);
  const qsizetype n = dive.profile.size();
  EXPECT_EQ((QList<int>{g.markers[0].sample, g.markers[1].sample, g.markers[2].sample}),
            (QList<int>{10, int(n / 2), int(n * 3 / 4)}));
  EXPECT_EQ(g.markers[1].at, g.depthLine[n / 2]);
  EXPECT_EQ(g.markers[0].words, (QStringList{"Out of range", "Other (code 0x40)"}));
  // The crosshair takes the sample nearest the mouse, ends included.
  const double between = g.depthLine[20].x() * 0.4 + g.depthLine[21].x() * 0.6;
  const std::optional<ProfileReadout> read = ReadProfileAt(record, g, between);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->seconds, 210);
  EXPECT_DOUBLE_EQ(read->metres, dive.profile[21].depthCm / 100.0);
  EXPECT_FLOAT_EQ(read->celsius, dive.profile[21].temperatureDeci / 10.0f);
  EXPECT_EQ(ReadProfileAt(record, g, 1e6)->sample, n - 1);

  // The summary: Japan time, the coldest sample below zero, the dive's own flags.
  dive.entry = kEntry;
  dive.exit = kEntry.addSecs(52 * 60);
  dive.temperatureDeci = 300;
  dive.profile[30].temperatureDeci = -15;
  const QList<DiveSummaryLine> lines = SummarizeDive(Decoded(dive), ShownClock::Japan);
  ASSERT_EQ(lines.size(), 11);
  EXPECT_EQ(lines[0].value + " " + lines[2].value + " " + lines[6].value,
            "Japan time 05:30 – 06:22 -1.5 °C");
  EXPECT_EQ(lines[7].value, "Ascent too fast, Decompression stop required");
  // A dive without samples, and water of one temperature: nothing to divide by.
  const DiveRecord empty = Decoded(Generated(0, 1500, 268, 187));
  const QList<DiveSummaryLine> still = SummarizeDive(empty, ShownClock::Japan);
  EXPECT_EQ(still[6].value + ", " + still[7].value, "18.7 °C, None");
  EXPECT_TRUE(LayOutProfile(empty, kPlot).depthLine.isEmpty());
  EXPECT_FALSE(ReadProfileAt(empty, LayOutProfile(empty, kPlot), 100));
  const ProfileGeometry level = LayOutProfile(Decoded(Generated(30, 1500, 215, 215)), kPlot);
  EXPECT_NEAR(level.temperatureLine[40].y(), kPlot.center().y(), 0.5);
}

TEST(DiveProfile, ClipsAreMarkedOnlyWithinTheDiveOnTheDeviceClock) {
  const DiveRecord dive = Decoded(Generated(45, 1800));  // 20:30 to 21:15 UTC
  const ProfileGeometry g = LayOutProfile(dive, kPlot);  // 0 to 50 minutes, 0 to 30 m
  EXPECT_EQ(g.depthLine[60], QPointF(40 + 120, 30 + dive.samples[60].depthMetres() * 10));
  // A full page of a deep dive still fits the plot: the scales grow with the dive.
  const ProfileGeometry deep = LayOutProfile(Decoded(Generated(84, 4480)), kPlot);
  const QRectF edges = kPlot.adjusted(-0.01, -0.01, 0.01, 0.01);
  EXPECT_TRUE(std::ranges::all_of(deep.depthLine, [&](QPointF p) { return edges.contains(p); }));
  const QList<QDateTime> clips = {
      kEntry.addSecs(-1), kEntry, kEntry.addSecs(600).toTimeZone(QTimeZone(9 * 3600)),
      kEntry.addSecs(45 * 60), kEntry.addSecs(45 * 60 + 1),
      // The Japan-time reading of a moment in the dive, taken as the device's clock.
      QDateTime(QDate(2023, 11, 6), QTime(5, 40), QTimeZone::utc())};
  const QList<ClipMark> marks = PlaceClips(dive, g, clips);
  ASSERT_EQ(marks.size(), 3);
  EXPECT_EQ((QList<int>{marks[0].index, marks[1].index, marks[2].index}), (QList<int>{1, 2, 3}));
  EXPECT_DOUBLE_EQ(marks[0].x, kPlot.left());
  EXPECT_DOUBLE_EQ(marks[1].x, kPlot.left() + 600 * 10.0 / 50);
}

int CountPixels(const QImage &image, const QColor &color) {
  int count = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) count += image.pixelColor(x, y).rgb() == color.rgb();
  }
  return count;
}

// The line in its band's colour with water above it only, a marker named on hover, and a
// click on a clip's mark reported while one beside it is not.
TEST(DiveProfileView, PaintsTheDiveAndReportsAClickedClip) {
  DiveProfileView view;
  view.resize(640, 320);
  sim::Dive dive = Generated(45, 1800);
  dive.profile[100].warnings = 0x01;
  view.setDive(Decoded(dive));
  const QList<QDateTime> clips = {kEntry.addSecs(-600), kEntry.addSecs(20 * 60)};
  view.setClips({{1, {}, clips[0], 7, 0}, {2, {}, clips[1], 7, 204 * 16000 + 15999}});
  const QImage image = view.grab().toImage();
  const ProfileGeometry &g = view.profileGeometry();
  EXPECT_GT(CountPixels(image, DiveProfileView::BandColor(AscentBand::Green)), 500);
  EXPECT_GT(CountPixels(image, DiveProfileView::MarkerColor()), 20);
  const QPoint deepest = std::ranges::max_element(g.depthLine, {}, &QPointF::y)->toPoint();
  const auto watery = [](QColor c) { return c.blue() > c.red() + 30; };
  EXPECT_TRUE(watery(image.pixelColor(deepest - QPoint(0, 6))));
  EXPECT_FALSE(watery(image.pixelColor(deepest + QPoint(0, 6))));
  const QPoint marker = g.markers.value(0).at.toPoint() - QPoint(0, 6);
  QHelpEvent hover(QEvent::ToolTip, marker, view.mapToGlobal(marker));
  QApplication::sendEvent(&view, &hover);
  EXPECT_TRUE(QToolTip::text().endsWith("\nAscent too fast")) << qPrintable(QToolTip::text());

  QList<int> clicked;
  view.clipClicked = [&clicked](int index) { clicked << index; };
  const double x = PlaceClips(Decoded(dive), g, clips).value(0).x;
  for (const QPointF at : {QPointF(x, g.plot.top() - 8), QPointF(x + 40, 10)}) {
    QMouseEvent press(QEvent::MouseButtonPress, at, view.mapToGlobal(at), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&view, &press);
  }
  EXPECT_EQ(clicked, QList<int>{1});
  // The pin names the clip's length from its audio, as the lists and the player do.
  const QPoint pin(int(x), int(g.plot.top()) - 8);
  QHelpEvent pinHover(QEvent::ToolTip, pin, view.mapToGlobal(pin));
  QApplication::sendEvent(&view, &pinHover);
  EXPECT_TRUE(QToolTip::text().contains("3:24")) << qPrintable(QToolTip::text());
}

}  // namespace
