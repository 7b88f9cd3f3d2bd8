#pragma once

#include <QString>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

#include "DeviceRegistry.h"

class Session;

// What discovery keeps of a device it has taken in, from its arrival to its removal.
struct UsbDeviceRecord {
  RegistryEntry notification = 0;
  std::unique_ptr<UsbDeviceInterface> deviceInterface;
  QString deviceName;
  uint32_t locationID = 0;
  Session *tViewController = nullptr;
};

// Finds the diver's device on the USB bus, follows the registry from the USB device to
// its serial node, and opens that at 9600 baud; counts the matching devices attached in
// the session's deviceExist. Each arrival is walked on a thread of its own, so a slow
// walk never holds up the window or another walk; removals arrive on the main thread.
class DeviceDiscovery {
 public:
  DeviceDiscovery(Session *controller, std::unique_ptr<DeviceRegistry> registry);
  // Waits for walks under way; their pacing pauses end at once.
  ~DeviceDiscovery();
  DeviceDiscovery(const DeviceDiscovery &) = delete;
  DeviceDiscovery &operator=(const DeviceDiscovery &) = delete;

  // Registers for arrivals and makes the first pass over the devices attached now. While
  // the session's initialRunning is set, that pass only counts them; the flag is cleared
  // once the pass has counted, so a device attached at start is never opened. Returns
  // without waiting for later walks. Runs on a background thread.
  void InitDevice();

  // The pause at the end of every registry search step (one second): it gives the serial
  // driver time to attach below a device that has only just arrived. Tests shorten it.
  void setPacingSleep(std::function<void()> sleep) { pacingSleep_ = std::move(sleep); }
  // Blocks until no walk is under way. For tests and benchmarks.
  void waitForWalks();

 private:
  void firstMatch(Session *controller);
  void DeviceAdded(Session *controller);
  void DeviceNotification(UsbDeviceRecord *record, RegistryEntry service, uint32_t messageType);
  uint8_t GetDeviceInfomation(Session *controller, RegistryEntry service);
  uint8_t GetChildDeviceInfomation(Session *controller, RegistryEntry entry);
  void pace();
  // Runs work on a walk thread of its own; threads of finished walks are joined here.
  void dispatch(std::function<void()> work);

  struct Walk {
    std::thread thread;
    std::shared_ptr<std::atomic<bool>> finished;
  };

  Session *controller_;
  std::unique_ptr<DeviceRegistry> registry_;
  std::function<void()> pacingSleep_;

  std::mutex walksMutex_;
  std::list<Walk> walks_;

  std::mutex mutex_;  // guards what follows
  std::condition_variable stopping_;
  bool stopped_ = false;
  std::list<std::unique_ptr<UsbDeviceRecord>> records_;
};
