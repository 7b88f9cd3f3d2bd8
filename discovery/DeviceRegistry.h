#pragma once

#include <QMap>
#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

// The USB IDs of the Corvamund QM482 family.
constexpr uint32_t kCorvamundVendorId = 0x1209;
constexpr uint32_t kCorvamundProductId = 0x4D52;

// A handle on one object of the system's device registry (a device, an interface, a
// serial node, a notification); 0 is none. Handles are small numbers, so that the log
// lines can print them.
using RegistryEntry = uint32_t;
// A registry object's properties. A serial node that can be opened carries its path
// under kCalloutDeviceKey.
using RegistryProperties = QMap<QString, QString>;
// Result codes of registry calls: 0 is success; failures keep the values of the system
// calls they stand for, so that the log reads the same on every platform.
using RegistryResult = int32_t;

inline constexpr const char *kCalloutDeviceKey = "IOCalloutDevice";
constexpr RegistryResult kRegistrySuccess = 0;
constexpr RegistryResult kRegistryError = static_cast<RegistryResult>(0xE00002BC);
constexpr RegistryResult kRegistryNoDevice = static_cast<RegistryResult>(0xE00002C0);
constexpr RegistryResult kRegistryUnsupported = static_cast<RegistryResult>(0xE00002C7);
constexpr RegistryResult kRegistryNoInterface = static_cast<RegistryResult>(0x80000004);
// The message an interest registration receives when its device has gone.
constexpr uint32_t kRegistryServiceTerminated = 0xE0000010;

// The USB device's own interface: asked once for the device's location on the bus.
class UsbDeviceInterface {
 public:
  virtual ~UsbDeviceInterface() = default;
  virtual RegistryResult GetLocationID(uint32_t *locationID) = 0;
};

// The way in to a device's USB interface. Released by destruction.
class PlugInInterface {
 public:
  virtual ~PlugInInterface() = default;
  virtual RegistryResult QueryInterface(std::unique_ptr<UsbDeviceInterface> *deviceInterface) = 0;
};

// The system's registry of devices, as discovery walks it: matching arrivals by USB IDs,
// the parent and children of every object, their properties, and removal notices.
// Entries handed out by nextMatch, parent and children are the caller's to release.
// Callable from any thread; notifications arrive on the main thread.
class DeviceRegistry {
 public:
  using MatchCallback = std::function<void()>;
  using InterestCallback = std::function<void(RegistryEntry service, uint32_t messageType)>;

  virtual ~DeviceRegistry() = default;

  // Prepares matching of USB devices with these IDs. False when the system refuses.
  virtual bool createMatching(uint32_t vendorId, uint32_t productId) = 0;
  // Starts delivering arrivals: the devices attached now wait in the arrival iterator at
  // once, and from now on callback runs on the main thread whenever more arrive.
  virtual void addFirstMatchNotification(MatchCallback callback) = 0;
  // The next arrival waiting in the iterator; 0 once it is drained.
  virtual RegistryEntry nextMatch() = 0;

  virtual bool getName(RegistryEntry entry, QString *name) = 0;
  virtual RegistryResult createPlugInInterface(RegistryEntry service,
                                               std::unique_ptr<PlugInInterface> *plugIn) = 0;
  // Calls callback on the main thread with every message about service (its removal
  // among them) until the notification entry is released.
  virtual RegistryResult addInterestNotification(RegistryEntry service, InterestCallback callback,
                                                 RegistryEntry *notification) = 0;

  virtual RegistryResult createProperties(RegistryEntry entry, RegistryProperties *properties) = 0;
  // The entry's parent; 0 at the root.
  virtual RegistryEntry parent(RegistryEntry entry) = 0;
  virtual RegistryResult children(RegistryEntry entry, std::vector<RegistryEntry> *children) = 0;
  // Whether the entry is a USB device itself, rather than one of its interfaces or the
  // drivers and nodes below them. Hubs are USB devices too.
  virtual bool isUsbDevice(RegistryEntry entry) = 0;
  virtual void release(RegistryEntry entry) = 0;
};

// The registry of the platform the program runs on.
std::unique_ptr<DeviceRegistry> MakePlatformRegistry();

// A dictionary as the log shows it: {KEY = value; ...}.
QString DescribeProperties(const RegistryProperties &properties);
