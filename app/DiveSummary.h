#pragma once

#include <QList>
#include <QStringList>
#include <QWidget>
#include <optional>

#include "DiveRecord.h"

class QFormLayout;

// The flags of a dive in the reader's language. The summary and the samples name their
// bits differently: 0x20 is a maximum-depth warning in the summary, a depth alarm in a
// sample. A bit without a name reads "Other (code 0x40)".
QStringList DiveWarningWords(int32_t flags);
QStringList SampleWarningWords(int32_t flags);
QStringList InformationWords(int32_t flags);

// One line of the summary: what it is and its value, both as shown.
struct DiveSummaryLine {
  QString label;
  QString value;
};

// What a diver reads first about a dive: date and entry - exit time in Japan time as the
// dive list shows them, dive time, maximum and average depth, the lowest water temperature
// (from the samples, or the summary's temperature when there are none), warnings, device
// status, CNS and OTU.
QList<DiveSummaryLine> SummarizeDive(const DiveRecord &dive);

// The summary as a form of labels; empty when no dive is set.
class DiveSummaryView : public QWidget {
 public:
  explicit DiveSummaryView(QWidget *parent = nullptr);
  void setDive(std::optional<DiveRecord> dive);

 private:
  QFormLayout *form_;
};
