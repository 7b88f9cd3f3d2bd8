#include "DiveSummary.h"

#include <QFormLayout>
#include <QLabel>

#include "ListRows.h"
#include "Localization.h"

namespace {

QString WordsOrNone(const QStringList &words) {
  return words.isEmpty() ? Localized("flags_none") : words.join(Localized("list_separator"));
}

}  // namespace

QList<DiveSummaryLine> SummarizeDive(const DiveRecord &dive, ShownClock clock) {
  // The dive list's styles; a date the device could not have meant shows as zeros there too.
  const QDateTime entry = OnClock(dive.entry, clock), exit = OnClock(dive.exit, clock);
  const QString date =
      entry.isValid() ? entry.toString(QStringLiteral("yyyy/MM/dd")) : QStringLiteral("0000/00/00");
  const auto hours = [](const QDateTime &time) {
    return time.isValid() ? time.toString(QStringLiteral("HH:mm")) : QStringLiteral("00:00");
  };
  return {
      {Localized("summary_clock"), ClockName(clock)},
      {Localized("summary_date"), date},
      {Localized("summary_entry_exit"), QStringLiteral("%1 – %2").arg(hours(entry), hours(exit))},
      {Localized("summary_dive_time"), Localized("unit_minutes").arg(dive.diveTimeMinutes)},
      {Localized("summary_max_depth"), MetresText(dive.maxDepthMetres())},
      {Localized("summary_average_depth"), MetresText(dive.averageDepthMetres())},
      {Localized("summary_min_temperature"), CelsiusText(dive.lowestTemperatureCelsius())},
      {Localized("summary_warnings"), WordsOrNone(DiveWarningWords(dive.warningFlags))},
      {Localized("summary_information"), WordsOrNone(InformationWords(dive.informationFlags))},
      {Localized("summary_cns"), QStringLiteral("%1 %").arg(dive.cns)},
      {Localized("summary_otu"), QString::number(dive.otu)},
  };
}

DiveSummaryView::DiveSummaryView(QWidget *parent)
    : QScrollArea(parent), form_(new QFormLayout(new QWidget(this))) {
  form_->setContentsMargins(0, 0, 0, 0);
  setWidget(form_->parentWidget());
  setWidgetResizable(true);
  setFrameShape(QFrame::NoFrame);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);  // the lines wrap instead
  // The lines sit on the pane's background beside the profile, not on a page of their own.
  viewport()->setAutoFillBackground(false);
  widget()->setAutoFillBackground(false);
}

void DiveSummaryView::setDive(std::optional<DiveRecord> dive, ShownClock clock) {
  while (form_->rowCount() > 0) form_->removeRow(0);
  if (!dive) return;
  for (const DiveSummaryLine &line : SummarizeDive(*dive, clock)) {
    auto *value = new QLabel(line.value, widget());
    value->setWordWrap(true);
    value->setTextInteractionFlags(Qt::TextSelectableByMouse);
    form_->addRow(line.label, value);
  }
}
