#include "SimulatedDevice.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "PseudoTerminal.h"

SimulatedDevice::SimulatedDevice(sim::Contents contents, sim::Options options) {
  QString error;
  master_ = sim::OpenPseudoTerminal(slavePath_, error);
  EXPECT_GE(master_, 0) << qPrintable(error);
  device_ = std::make_unique<sim::DeviceSimulator>(std::move(contents), std::move(options));
  thread_ = std::thread([this] { device_->serve(master_); });
}

SimulatedDevice::SimulatedDevice(sim::Contents contents, sim::Options options, int borrowedMaster)
    : master_(borrowedMaster), ownsMaster_(false) {
  device_ = std::make_unique<sim::DeviceSimulator>(std::move(contents), std::move(options));
  thread_ = std::thread([this] { device_->serve(master_); });
}

SimulatedDevice::~SimulatedDevice() {
  device_->stop();
  thread_.join();
  if (ownsMaster_ && !device_->hungUp()) close(master_);
}

sim::Contents OneClipOneDive() {
  sim::Contents contents;
  const QDateTime start(QDate::currentDate().addDays(-3), QTime(1, 30), Qt::UTC);
  contents.clips = {sim::Clip{start, 2, 12, 7}};
  contents.dives = {sim::GenerateDive(5, start.addSecs(3600), 42, 10, 1834, 270, 215)};
  contents.totalDives = 1;
  return contents;
}
