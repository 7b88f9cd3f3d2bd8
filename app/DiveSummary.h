#pragma once

#include <QList>
#include <QScrollArea>
#include <QStringList>
#include <optional>

#include "DiveFlags.h"
#include "DiveRecord.h"
#include "ShownClock.h"

class QFormLayout;

// One line of the summary: what it is and its value, both as shown.
struct DiveSummaryLine {
  QString label;
  QString value;
};

// What a diver reads first about a dive: the clock its times are on, date and entry - exit
// time on that clock as the dive list shows them, dive time, maximum and average depth, the lowest
// water temperature (from the samples, or the summary's temperature when there are none), warnings,
// device status, CNS and OTU.
QList<DiveSummaryLine> SummarizeDive(const DiveRecord &dive, ShownClock clock);

// The summary as a form of labels; empty when no dive is set. Long values wrap, and a pane
// too short for every line scrolls rather than making the window taller.
class DiveSummaryView : public QScrollArea {
 public:
  explicit DiveSummaryView(QWidget *parent = nullptr);
  void setDive(std::optional<DiveRecord> dive, ShownClock clock);

 private:
  QFormLayout *form_;
};
