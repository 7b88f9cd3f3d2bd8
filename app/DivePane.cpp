#include "DivePane.h"

#include <QHBoxLayout>

#include "DiveProfileView.h"
#include "DiveSummary.h"

DivePane::DivePane(QWidget *parent)
    : QWidget(parent), profile_(new DiveProfileView(this)), summary_(new DiveSummaryView(this)) {
  auto *layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(profile_, 3);
  layout->addWidget(summary_, 1);
  summary_->setMinimumWidth(300);
  profile_->clipClicked = [this](int mark) {
    if (pinClicked) pinClicked(mark);
  };
}

void DivePane::showDive(const std::optional<DiveRecord> &dive, const QList<QDateTime> &clipTimes) {
  profile_->setDive(dive);
  profile_->setClips(clipTimes);
  summary_->setDive(dive);
}
