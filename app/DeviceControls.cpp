#include "DeviceControls.h"

DeviceControls ControlsFor(DevicePhase phase, bool heldDives) {
  DeviceControls offered;
  switch (phase) {
    case DevicePhase::Absent:
      offered.range = true;  // only stored, for the next listing
      break;
    case DevicePhase::Opening:
    case DevicePhase::Identifying:
    case DevicePhase::Busy:
      break;
    case DevicePhase::Listing:
      offered.clipList = true;  // the clips are in before the dives are read
      break;
    case DevicePhase::Idle:
      offered = {true, true, true, true, true, heldDives};
      break;
    case DevicePhase::Stopped:
      offered.range = true;
      offered.reconnect = true;
      break;
  }
  return offered;
}
