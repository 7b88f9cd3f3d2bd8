#pragma once

#include "DeviceState.h"

// Which of the window's device controls a phase offers. A list is offered only with rows in
// it, and nothing is while a job of several items runs; the window applies those itself.
struct DeviceControls {
  bool range = false;      // the period the lists show
  bool reconnect = false;  // identify and list the device again
  bool clipList = false, diveList = false;
  bool clipDownload = false, diveDownload = false;
};

// heldDives: the device holds dives, so there is a dive to download.
DeviceControls ControlsFor(DevicePhase phase, bool heldDives);
