#pragma once

#include <QString>
#include <memory>
#include <thread>

#include "DeviceSimulator.h"

namespace sim {

// The simulator serving a line on its own thread for the life of the object: a fresh
// pseudo-terminal whose slavePath() the host opens as the device's serial port, or a
// master side somebody else owns (a virtual USB device's serial node).
class SimulatedDevice {
 public:
  explicit SimulatedDevice(Contents contents, Options options = {}, int borrowedMaster = -1);
  ~SimulatedDevice();

  // Empty when no pseudo-terminal could be made; error() says why.
  QString slavePath() const { return slavePath_; }
  QString error() const { return error_; }
  DeviceSimulator &device() { return *device_; }

 private:
  QString slavePath_, error_;
  int master_;
  bool ownsMaster_;
  std::unique_ptr<DeviceSimulator> device_;
  std::thread thread_;
};

// A small device: one clip of 90 seconds and one dive, both from three days ago.
Contents OneClipOneDive();

}  // namespace sim
