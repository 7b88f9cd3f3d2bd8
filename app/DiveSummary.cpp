#include "DiveSummary.h"

#include <QFormLayout>
#include <QLabel>
#include <algorithm>
#include <array>

#include "Localization.h"

namespace {

struct FlagWord {
  int32_t mask;
  const char *key;
};

constexpr std::array<FlagWord, 7> kDiveWarningWords = {{{0x01, "flag_slow"},
                                                        {0x02, "flag_deco"},
                                                        {0x04, "flag_deco_depth"},
                                                        {0x08, "flag_po2"},
                                                        {0x10, "flag_o2"},
                                                        {0x20, "flag_max_depth"},
                                                        {0x80, "flag_out_of_range"}}};
constexpr std::array<FlagWord, 7> kSampleWarningWords = {{{0x01, "flag_slow"},
                                                          {0x02, "flag_deco"},
                                                          {0x04, "flag_deco_depth"},
                                                          {0x08, "flag_po2"},
                                                          {0x10, "flag_o2"},
                                                          {0x20, "flag_depth_alarm"},
                                                          {0x80, "flag_out_of_range"}}};
constexpr std::array<FlagWord, 4> kInformationWords = {{{0x04, "flag_sensor_error"},
                                                        {0x08, "flag_battery_low"},
                                                        {0x10, "flag_temperature_error"},
                                                        {0x20, "flag_device_error"}}};

template <size_t N>
QStringList Words(const std::array<FlagWord, N> &table, int32_t flags) {
  QStringList words;
  int32_t named = 0;
  for (const FlagWord &flag : table) {
    named |= flag.mask;
    if (flags & flag.mask) words << Localized(flag.key);
  }
  const int32_t other = flags & ~named;
  for (int32_t bit = 1; bit <= other; bit <<= 1) {
    if (other & bit) {
      words << Localized("flag_other").arg(QStringLiteral("0x%1").arg(bit, 2, 16, QChar(u'0')));
    }
  }
  return words;
}

QString WordsOrNone(const QStringList &words) {
  return words.isEmpty() ? Localized("flags_none") : words.join(Localized("list_separator"));
}

}  // namespace

QStringList DiveWarningWords(int32_t flags) {
  return Words(kDiveWarningWords, flags);
}

QStringList SampleWarningWords(int32_t flags) {
  return Words(kSampleWarningWords, flags);
}

QStringList InformationWords(int32_t flags) {
  return Words(kInformationWords, flags);
}

QList<DiveSummaryLine> SummarizeDive(const DiveRecord &dive) {
  // The dive list's styles; a date the device could not have meant shows as zeros there too.
  const QDateTime entry = dive.entryJapanTime(), exit = dive.exitJapanTime();
  const QString date =
      entry.isValid() ? entry.toString(QStringLiteral("yyyy/MM/dd")) : QStringLiteral("0000/00/00");
  const auto clock = [](const QDateTime &time) {
    return time.isValid() ? time.toString(QStringLiteral("HH:mm")) : QStringLiteral("00:00");
  };
  float lowest = dive.temperatureCelsius();
  if (!dive.samples.isEmpty()) {
    lowest =
        std::ranges::min(dive.samples, {}, &DiveSample::temperatureCelsius).temperatureCelsius();
  }
  const auto metres = [](double value) { return Localized("unit_metres").arg(value, 0, 'f', 1); };
  return {
      {Localized("summary_date"), date},
      {Localized("summary_entry_exit"), QStringLiteral("%1 – %2").arg(clock(entry), clock(exit))},
      {Localized("summary_dive_time"), Localized("unit_minutes").arg(dive.diveTimeMinutes)},
      {Localized("summary_max_depth"), metres(dive.maxDepthMetres())},
      {Localized("summary_average_depth"), metres(dive.averageDepthMetres())},
      {Localized("summary_min_temperature"), Localized("unit_celsius").arg(lowest, 0, 'f', 1)},
      {Localized("summary_warnings"), WordsOrNone(DiveWarningWords(dive.warningFlags))},
      {Localized("summary_information"), WordsOrNone(InformationWords(dive.informationFlags))},
      {Localized("summary_cns"), QStringLiteral("%1 %").arg(dive.cns)},
      {Localized("summary_otu"), QString::number(dive.otu)},
  };
}

DiveSummaryView::DiveSummaryView(QWidget *parent) : QWidget(parent), form_(new QFormLayout(this)) {
  form_->setContentsMargins(0, 0, 0, 0);
}

void DiveSummaryView::setDive(std::optional<DiveRecord> dive) {
  while (form_->rowCount() > 0) form_->removeRow(0);
  if (!dive) return;
  for (const DiveSummaryLine &line : SummarizeDive(*dive)) {
    auto *value = new QLabel(line.value, this);
    value->setWordWrap(true);
    value->setTextInteractionFlags(Qt::TextSelectableByMouse);
    form_->addRow(line.label, value);
  }
}
