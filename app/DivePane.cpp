#include "DivePane.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "DiveProfileView.h"
#include "DiveSummary.h"
#include "PlayerBar.h"

DivePane::DivePane(QWidget *parent)
    : QWidget(parent),
      profile_(new DiveProfileView(this)),
      summary_(new DiveSummaryView(this)),
      player_(new PlayerBar(this)) {
  auto *dive = new QHBoxLayout;
  dive->addWidget(profile_, 3);
  dive->addWidget(summary_, 1);
  auto *layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addLayout(dive, 1);
  layout->addWidget(player_);
  summary_->setMinimumWidth(300);
  profile_->clipClicked = [this](int mark) {
    if (pinClicked) pinClicked(mark);
  };
}

void DivePane::showDive(const std::optional<DiveRecord> &dive, const QList<ClipRow> &clips,
                        ShownClock clock) {
  profile_->setDive(dive);
  profile_->setClips(clips);
  summary_->setDive(dive && !dive->damage ? dive : std::nullopt, clock);
}
