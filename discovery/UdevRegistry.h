#pragma once

#include <QByteArray>
#include <QObject>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>

#include "DeviceRegistry.h"

struct udev;
struct udev_device;
struct udev_monitor;
class QSocketNotifier;

// The device registry on Linux: sysfs through libudev. Arrivals and removals come from a
// udev monitor on USB devices, watched on the main thread; the devices attached when
// matching starts are enumerated into the arrival iterator. A tty node's device file is
// its callout path. Construct on the main thread.
class UdevRegistry : public DeviceRegistry {
 public:
  UdevRegistry();
  ~UdevRegistry() override;

  bool createMatching(uint32_t vendorId, uint32_t productId) override;
  void addFirstMatchNotification(MatchCallback callback) override;
  RegistryEntry nextMatch() override;
  bool getName(RegistryEntry entry, QString *name) override;
  RegistryResult createPlugInInterface(RegistryEntry service,
                                       std::unique_ptr<PlugInInterface> *plugIn) override;
  RegistryResult addInterestNotification(RegistryEntry service, InterestCallback callback,
                                         RegistryEntry *notification) override;
  RegistryResult createProperties(RegistryEntry entry, RegistryProperties *properties) override;
  RegistryEntry parent(RegistryEntry entry) override;
  RegistryResult children(RegistryEntry entry, std::vector<RegistryEntry> *children) override;
  bool isUsbDevice(RegistryEntry entry) override;
  void release(RegistryEntry entry) override;

 private:
  struct Interest {
    QByteArray syspath;
    RegistryEntry service;
    InterestCallback callback;
  };
  // What follows expects mutex_ held: libudev objects serve one thread at a time.
  RegistryEntry entryFor(const QByteArray &syspath);
  udev_device *deviceFor(RegistryEntry entry);  // new reference, or null
  bool matches(udev_device *device) const;
  void arrive(const QByteArray &syspath);

  void readMonitor();  // on the main thread

  QObject mainThread_;  // lives on the main thread; the monitor's notifier is made there
  std::unique_ptr<QSocketNotifier> notifier_;

  std::mutex mutex_;
  udev *udev_ = nullptr;
  udev_monitor *monitor_ = nullptr;
  uint32_t vendorId_ = 0;
  uint32_t productId_ = 0;
  MatchCallback firstMatch_;
  std::deque<RegistryEntry> arrivals_;  // the arrival iterator
  std::set<QByteArray> present_;        // matching devices attached, by sysfs path
  std::map<QByteArray, RegistryEntry> entries_;
  std::map<RegistryEntry, QByteArray> syspaths_;
  std::map<RegistryEntry, Interest> interests_;  // by notification entry
  RegistryEntry lastEntry_ = 0;
};
