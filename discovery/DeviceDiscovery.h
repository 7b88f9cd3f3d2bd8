#pragma once

#include <QString>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "DeviceRegistry.h"
#include "MainThreadHandOff.h"

class Session;

// The name of the window's thread that runs startDiscovery: while it is alive, the devices
// attached at start are still being counted, and one plugged in now counts among them.
inline constexpr char kFirstScanThreadName[] = "usb-first-scan";

// What discovery keeps of a device it has taken in, from its arrival to its removal.
struct UsbDeviceRecord {
  RegistryEntry notification = 0;
  std::unique_ptr<UsbDeviceInterface> deviceInterface;
  QString deviceName;
  uint32_t locationID = 0;
  Session *session = nullptr;
};

// Finds the diver's device on the USB bus, follows the registry from the USB device to
// its serial node, and opens that at 9600 baud; counts the matching devices attached in
// the session's deviceExist. Each arrival is walked on a thread of its own, so a slow
// walk never holds up the window or another walk; removals arrive on the main thread.
// The walks hand the opening of a port to the main thread, where the session lives, so
// that two of them never open ports on it at once. Make and destroy it on the main thread.
class DeviceDiscovery {
 public:
  using PortOpener = std::function<std::optional<QString>(const QString &path, unsigned baud)>;

  DeviceDiscovery(Session *controller, std::unique_ptr<DeviceRegistry> registry);
  // Waits for walks under way; their pacing pauses end at once.
  ~DeviceDiscovery();
  DeviceDiscovery(const DeviceDiscovery &) = delete;
  DeviceDiscovery &operator=(const DeviceDiscovery &) = delete;

  // Registers for arrivals and makes the first pass over the devices attached now. While
  // the session's initialRunning is set, that pass only counts them; the flag is cleared
  // once the pass has counted, so a device attached at start is never opened. Returns
  // without waiting for later walks. Runs on a background thread, or on the main thread
  // when the first pass may open (it then does the opening while it waits).
  void startDiscovery();

  // The pause at the end of every registry search step (one second): it gives the serial
  // driver time to attach below a device that has only just arrived. Tests shorten it.
  void setPacingSleep(std::function<void()> sleep) { pacingSleep_ = std::move(sleep); }
  // How a port is opened: the session's openSerialPort, unless a test looks on.
  void setPortOpener(PortOpener opener) { portOpener_ = std::move(opener); }
  // Blocks until no walk is under way; on the main thread it opens their ports meanwhile.
  // For tests and benchmarks.
  void waitForWalks();

 private:
  void firstMatch(Session *controller);
  void deviceAdded(Session *controller);
  void deviceNotification(UsbDeviceRecord *record, RegistryEntry service, uint32_t messageType);
  uint8_t findSerialPort(Session *controller, RegistryEntry service);
  // device: the USB device being walked for; serial nodes of other devices are skipped.
  uint8_t findSerialPortBelow(Session *controller, RegistryEntry entry, RegistryEntry device);
  // Whether the nearest USB device above entry is device.
  bool belongsTo(RegistryEntry entry, RegistryEntry device);
  std::optional<QString> openOnMainThread(Session *controller, const QString &port);
  void pace();
  // Runs work on a walk thread of its own; threads of finished walks are joined here.
  // Returns the flag that the walk raises once it has finished.
  std::shared_ptr<std::atomic<bool>> dispatch(std::function<void()> work);

  struct Walk {
    std::thread thread;
    std::shared_ptr<std::atomic<bool>> finished;
  };

  Session *controller_;
  std::unique_ptr<DeviceRegistry> registry_;
  std::function<void()> pacingSleep_;
  PortOpener portOpener_;
  MainThreadHandOff mainThread_;

  std::mutex walksMutex_;
  std::list<Walk> walks_;

  std::mutex mutex_;  // guards what follows
  std::condition_variable stopping_;
  bool stopped_ = false;
  std::list<std::unique_ptr<UsbDeviceRecord>> records_;
};
