#include "SimulatedDevice.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <termios.h>
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

RawPort::RawPort(const QString &path) {
  fd_ = open(path.toLocal8Bit().constData(), O_RDWR | O_NOCTTY);
  EXPECT_GE(fd_, 0) << qPrintable(path);
  termios attributes{};
  tcgetattr(fd_, &attributes);
  cfmakeraw(&attributes);
  tcsetattr(fd_, TCSANOW, &attributes);
}

RawPort::~RawPort() {
  if (fd_ >= 0) close(fd_);
}

void RawPort::send(const QByteArray &bytes) {
  ASSERT_EQ(write(fd_, bytes.constData(), bytes.size()), bytes.size());
}

QByteArray RawPort::readOnce(int timeoutMs) {
  pollfd p{fd_, POLLIN, 0};
  if (poll(&p, 1, timeoutMs) <= 0) return {};
  char buffer[65536];
  const ssize_t n = read(fd_, buffer, sizeof buffer);
  if (n <= 0) return {};
  return QByteArray(buffer, n);
}

QByteArray RawPort::readUntilQuiet(int quietMs) {
  QByteArray all;
  for (QByteArray piece; !(piece = readOnce(quietMs)).isEmpty();) all += piece;
  return all;
}

sim::Contents OneClipOneDive() {
  sim::Contents contents;
  const QDateTime start(QDate::currentDate().addDays(-3), QTime(1, 30), Qt::UTC);
  contents.clips = {sim::Clip{start, 2, 12, 7}};
  contents.dives = {sim::GenerateDive(5, start.addSecs(3600), 42, 10, 1834, 270, 215)};
  contents.totalDives = 1;
  return contents;
}
