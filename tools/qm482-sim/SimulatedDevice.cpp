#include "SimulatedDevice.h"

#include <unistd.h>

#include "PseudoTerminal.h"

namespace sim {

SimulatedDevice::SimulatedDevice(Contents contents, Options options, int borrowedMaster)
    : master_(borrowedMaster), ownsMaster_(borrowedMaster < 0) {
  if (ownsMaster_) master_ = OpenPseudoTerminal(slavePath_, error_);
  device_ = std::make_unique<DeviceSimulator>(std::move(contents), std::move(options));
  if (master_ >= 0) thread_ = std::thread([this] { device_->serve(master_); });
}

SimulatedDevice::~SimulatedDevice() {
  device_->stop();
  if (thread_.joinable()) thread_.join();
  if (ownsMaster_ && master_ >= 0 && !device_->hungUp()) close(master_);
}

Contents OneClipOneDive() {
  Contents contents;
  const QDateTime start(QDate::currentDate().addDays(-3), QTime(1, 30), Qt::UTC);
  contents.clips = {Clip{start, 2, 12, 7}};
  contents.dives = {GenerateDive(5, start.addSecs(3600), 42, 10, 1834, 270, 215)};
  contents.totalDives = 1;
  return contents;
}

}  // namespace sim
