#pragma once

#include <QDateTime>
#include <QList>
#include <QWidget>
#include <functional>
#include <optional>

#include "DeviceState.h"
#include "DiveRecord.h"
#include "ShownClock.h"

class DiveProfileView;
class DiveSummaryView;
class PlayerBar;

// The picked dive below the lists: its profile, with the clips spoken during it pinned on
// its timeline, its summary, and the player under them that plays a pinned or picked clip.
// It knows nothing of where the dive came from; a click on a pin is reported by the pin's
// place among the clip times it was given.
class DivePane : public QWidget {
 public:
  explicit DivePane(QWidget *parent = nullptr);

  // Shows the dive (none: the empty pane) with its times on the clock given, and pins the
  // clips that began during it. A damaged page is named, not drawn.
  void showDive(const std::optional<DiveRecord> &dive, const QList<ClipRow> &clips,
                ShownClock clock);
  std::function<void(int pin)> pinClicked;
  PlayerBar &player() { return *player_; }

 private:
  DiveProfileView *profile_;
  DiveSummaryView *summary_;
  PlayerBar *player_;
};
