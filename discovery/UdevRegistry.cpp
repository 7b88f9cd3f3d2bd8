#include "UdevRegistry.h"

#include <libudev.h>

#include <QCoreApplication>
#include <QSocketNotifier>

#include "SystemLog.h"

namespace {

using UdevDevicePtr = std::unique_ptr<udev_device, decltype(&udev_device_unref)>;

UdevDevicePtr Owned(udev_device *device) {
  return UdevDevicePtr(device, &udev_device_unref);
}

QByteArray Text(const char *value) {
  return value ? QByteArray(value) : QByteArray();
}

bool HexAttribute(udev_device *device, const char *name, uint32_t *value) {
  bool ok = false;
  *value = Text(udev_device_get_sysattr_value(device, name)).trimmed().toUInt(&ok, 16);
  return ok;
}

// The bus number in the top byte, then one nibble per port on the way from the root hub,
// as the location IDs that support staff know from other systems.
bool LocationOf(const QByteArray &busnum, const QByteArray &devpath, uint32_t *locationID) {
  bool ok = false;
  const uint32_t bus = busnum.trimmed().toUInt(&ok);
  if (!ok || bus > 0xFF) return false;
  uint32_t location = bus << 24;
  int shift = 20;
  for (const QByteArray &port : devpath.trimmed().split('.')) {
    const uint32_t number = port.toUInt(&ok);
    if (!ok || shift < 0) return false;
    location |= (number & 0xF) << shift;
    shift -= 4;
  }
  *locationID = location;
  return true;
}

class UdevDeviceInterface : public UsbDeviceInterface {
 public:
  UdevDeviceInterface(QByteArray busnum, QByteArray devpath)
      : busnum_(std::move(busnum)), devpath_(std::move(devpath)) {}
  RegistryResult GetLocationID(uint32_t *locationID) override {
    return LocationOf(busnum_, devpath_, locationID) ? kRegistrySuccess : kRegistryUnsupported;
  }

 private:
  QByteArray busnum_, devpath_;
};

// A USB device's sysfs record, read when the plug-in is made.
class UdevPlugIn : public PlugInInterface {
 public:
  explicit UdevPlugIn(udev_device *device)
      : devtype_(Text(udev_device_get_devtype(device))),
        busnum_(Text(udev_device_get_sysattr_value(device, "busnum"))),
        devpath_(Text(udev_device_get_sysattr_value(device, "devpath"))) {}
  RegistryResult QueryInterface(std::unique_ptr<UsbDeviceInterface> *deviceInterface) override {
    if (devtype_ != "usb_device") return kRegistryNoInterface;
    *deviceInterface = std::make_unique<UdevDeviceInterface>(busnum_, devpath_);
    return kRegistrySuccess;
  }

 private:
  QByteArray devtype_, busnum_, devpath_;
};

}  // namespace

UdevRegistry::UdevRegistry() : udev_(udev_new()) {}

UdevRegistry::~UdevRegistry() {
  notifier_.reset();
  if (monitor_) udev_monitor_unref(monitor_);
  if (udev_) udev_unref(udev_);
}

bool UdevRegistry::createMatching(uint32_t vendorId, uint32_t productId) {
  std::lock_guard lock(mutex_);
  if (!udev_) return false;
  monitor_ = udev_monitor_new_from_netlink(udev_, "udev");
  if (!monitor_ ||
      udev_monitor_filter_add_match_subsystem_devtype(monitor_, "usb", "usb_device") < 0 ||
      udev_monitor_enable_receiving(monitor_) < 0) {
    return false;
  }
  vendorId_ = vendorId;
  productId_ = productId;
  return true;
}

void UdevRegistry::addFirstMatchNotification(MatchCallback callback) {
  {
    std::lock_guard lock(mutex_);
    firstMatch_ = std::move(callback);
    // The monitor is already receiving, so a device plugged in during this scan is
    // reported twice at most, and taken once.
    udev_enumerate *scan = udev_enumerate_new(udev_);
    udev_enumerate_add_match_subsystem(scan, "usb");
    udev_enumerate_add_match_property(scan, "DEVTYPE", "usb_device");
    udev_enumerate_scan_devices(scan);
    for (udev_list_entry *item = udev_enumerate_get_list_entry(scan); item;
         item = udev_list_entry_get_next(item)) {
      const QByteArray syspath = udev_list_entry_get_name(item);
      UdevDevicePtr device = Owned(udev_device_new_from_syspath(udev_, syspath.constData()));
      if (device && matches(device.get())) arrive(syspath);
    }
    udev_enumerate_unref(scan);
  }
  QMetaObject::invokeMethod(&mainThread_, [this] {
    std::lock_guard lock(mutex_);
    notifier_ =
        std::make_unique<QSocketNotifier>(udev_monitor_get_fd(monitor_), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, &mainThread_,
                     [this] { readMonitor(); });
  });
}

void UdevRegistry::readMonitor() {
  bool arrived = false;
  std::vector<std::pair<RegistryEntry, InterestCallback>> removed;
  {
    std::lock_guard lock(mutex_);
    while (UdevDevicePtr device = Owned(udev_monitor_receive_device(monitor_))) {
      const QByteArray action = Text(udev_device_get_action(device.get()));
      const QByteArray syspath = udev_device_get_syspath(device.get());
      if (action == "add" && matches(device.get())) {
        arrived |= !present_.contains(syspath);
        arrive(syspath);
      } else if (action == "remove") {
        present_.erase(syspath);
        for (const auto &[notification, interest] : interests_) {
          if (interest.syspath == syspath)
            removed.emplace_back(interest.service, interest.callback);
        }
      }
    }
  }
  // Outside the lock: the callbacks call back into the registry.
  for (const auto &[service, callback] : removed) callback(service, kRegistryServiceTerminated);
  if (arrived && firstMatch_) firstMatch_();
}

void UdevRegistry::arrive(const QByteArray &syspath) {
  if (!present_.insert(syspath).second) return;
  arrivals_.push_back(entryFor(syspath));
}

bool UdevRegistry::matches(udev_device *device) const {
  uint32_t vendor = 0, product = 0;
  return Text(udev_device_get_devtype(device)) == "usb_device" &&
         HexAttribute(device, "idVendor", &vendor) && vendor == vendorId_ &&
         HexAttribute(device, "idProduct", &product) && product == productId_;
}

RegistryEntry UdevRegistry::nextMatch() {
  std::lock_guard lock(mutex_);
  if (arrivals_.empty()) return 0;
  const RegistryEntry next = arrivals_.front();
  arrivals_.pop_front();
  return next;
}

RegistryEntry UdevRegistry::entryFor(const QByteArray &syspath) {
  auto [known, added] = entries_.try_emplace(syspath, lastEntry_ + 1);
  if (added) syspaths_.emplace(++lastEntry_, syspath);
  return known->second;
}

udev_device *UdevRegistry::deviceFor(RegistryEntry entry) {
  const auto syspath = syspaths_.find(entry);
  if (syspath == syspaths_.end()) return nullptr;
  return udev_device_new_from_syspath(udev_, syspath->second.constData());
}

bool UdevRegistry::getName(RegistryEntry entry, QString *name) {
  std::lock_guard lock(mutex_);
  UdevDevicePtr device = Owned(deviceFor(entry));
  if (!device) return false;
  const char *product = udev_device_get_sysattr_value(device.get(), "product");
  *name = QString::fromUtf8(product ? product : udev_device_get_sysname(device.get()));
  return true;
}

RegistryResult UdevRegistry::createPlugInInterface(RegistryEntry service,
                                                   std::unique_ptr<PlugInInterface> *plugIn) {
  std::lock_guard lock(mutex_);
  UdevDevicePtr device = Owned(deviceFor(service));
  if (!device) return kRegistryNoDevice;
  *plugIn = std::make_unique<UdevPlugIn>(device.get());
  return kRegistrySuccess;
}

RegistryResult UdevRegistry::addInterestNotification(RegistryEntry service,
                                                     InterestCallback callback,
                                                     RegistryEntry *notification) {
  std::lock_guard lock(mutex_);
  const auto syspath = syspaths_.find(service);
  if (syspath == syspaths_.end()) return kRegistryNoDevice;
  *notification = ++lastEntry_;
  // A device unplugged while a walk was still taking it in had its removal read before
  // anyone listened for it: it is told now, on the main thread as the monitor tells removals.
  if (!present_.contains(syspath->second)) {
    QMetaObject::invokeMethod(
        &mainThread_, [callback, service] { callback(service, kRegistryServiceTerminated); },
        Qt::QueuedConnection);
  }
  interests_.emplace(*notification, Interest{syspath->second, service, std::move(callback)});
  return kRegistrySuccess;
}

RegistryResult UdevRegistry::createProperties(RegistryEntry entry, RegistryProperties *properties) {
  std::lock_guard lock(mutex_);
  UdevDevicePtr device = Owned(deviceFor(entry));
  if (!device) return kRegistryNoDevice;
  for (udev_list_entry *item = udev_device_get_properties_list_entry(device.get()); item;
       item = udev_list_entry_get_next(item)) {
    properties->insert(QString::fromUtf8(udev_list_entry_get_name(item)),
                       QString::fromUtf8(Text(udev_list_entry_get_value(item))));
  }
  // A tty node is the serial port a program opens.
  const char *node = udev_device_get_devnode(device.get());
  if (Text(udev_device_get_subsystem(device.get())) == "tty" && node)
    properties->insert(QLatin1String(kCalloutDeviceKey), QString::fromUtf8(node));
  return kRegistrySuccess;
}

RegistryEntry UdevRegistry::parent(RegistryEntry entry) {
  std::lock_guard lock(mutex_);
  UdevDevicePtr device = Owned(deviceFor(entry));
  udev_device *parent = device ? udev_device_get_parent(device.get()) : nullptr;
  return parent ? entryFor(udev_device_get_syspath(parent)) : 0;
}

RegistryResult UdevRegistry::children(RegistryEntry entry, std::vector<RegistryEntry> *children) {
  std::lock_guard lock(mutex_);
  UdevDevicePtr device = Owned(deviceFor(entry));
  if (!device) return kRegistryNoDevice;
  const QByteArray self = udev_device_get_syspath(device.get());
  udev_enumerate *scan = udev_enumerate_new(udev_);
  udev_enumerate_add_match_parent(scan, device.get());
  udev_enumerate_scan_devices(scan);
  // The scan yields every device below; keep those whose parent is this one.
  for (udev_list_entry *item = udev_enumerate_get_list_entry(scan); item;
       item = udev_list_entry_get_next(item)) {
    const QByteArray syspath = udev_list_entry_get_name(item);
    if (syspath == self) continue;
    UdevDevicePtr below = Owned(udev_device_new_from_syspath(udev_, syspath.constData()));
    udev_device *parent = below ? udev_device_get_parent(below.get()) : nullptr;
    if (parent && self == udev_device_get_syspath(parent)) children->push_back(entryFor(syspath));
  }
  udev_enumerate_unref(scan);
  return kRegistrySuccess;
}

bool UdevRegistry::isUsbDevice(RegistryEntry entry) {
  std::lock_guard lock(mutex_);
  UdevDevicePtr device = Owned(deviceFor(entry));
  return device && Text(udev_device_get_devtype(device.get())) == "usb_device";
}

void UdevRegistry::release(RegistryEntry entry) {
  // Device entries stay valid for the life of the registry; a notification stops.
  std::lock_guard lock(mutex_);
  interests_.erase(entry);
}
