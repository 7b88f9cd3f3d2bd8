#pragma once

#include <QByteArray>
#include <QString>
#include <memory>
#include <thread>

#include "DeviceSimulator.h"

// The simulator serving a fresh pseudo-terminal on its own thread for the life of the
// object; the code under test opens slavePath() as the device's serial port.
class SimulatedDevice {
 public:
  explicit SimulatedDevice(sim::Contents contents, sim::Options options = {});
  // Serves a master side that somebody else owns (a virtual USB device's serial node).
  SimulatedDevice(sim::Contents contents, sim::Options options, int borrowedMaster);
  ~SimulatedDevice();

  QString slavePath() const { return slavePath_; }
  sim::DeviceSimulator &device() { return *device_; }

 private:
  QString slavePath_;
  int master_ = -1;
  bool ownsMaster_ = true;
  std::unique_ptr<sim::DeviceSimulator> device_;
  std::thread thread_;
};

// One clip of 90 seconds and one dive, both from three days ago.
sim::Contents OneClipOneDive();
