#include "DeviceDiscovery.h"

#include <chrono>

#include "Session.h"
#include "SystemLog.h"

namespace {

constexpr unsigned kDeviceBaud = 9600;
constexpr auto kPacing = std::chrono::seconds(1);
constexpr qsizetype kNameBufferSize = 128;

// A registry name as the record keeps it: what fits the name buffer, in ASCII.
QString AsciiName(const QString &name) {
  QString ascii = name.left(kNameBufferSize - 1);
  for (QChar &c : ascii) {
    if (c.unicode() > 0x7F) c = QLatin1Char('?');
  }
  return ascii;
}

}  // namespace

DeviceDiscovery::DeviceDiscovery(Session *controller, std::unique_ptr<DeviceRegistry> registry)
    : controller_(controller), registry_(std::move(registry)) {}

DeviceDiscovery::~DeviceDiscovery() {
  {
    std::lock_guard lock(mutex_);
    stopped_ = true;
  }
  stopping_.notify_all();
  waitForWalks();
}

std::shared_ptr<std::atomic<bool>> DeviceDiscovery::dispatch(std::function<void()> work) {
  auto finished = std::make_shared<std::atomic<bool>>(false);
  std::lock_guard lock(walksMutex_);
  walks_.remove_if([](Walk &walk) {
    if (!walk.finished->load()) return false;
    walk.thread.join();
    return true;
  });
  walks_.push_back({std::thread([this, work = std::move(work), finished] {
                      work();
                      *finished = true;
                      mainThread_.wake();
                    }),
                    finished});
  return finished;
}

void DeviceDiscovery::waitForWalks() {
  std::list<Walk> walks;
  {
    std::lock_guard lock(walksMutex_);
    walks.swap(walks_);
  }
  // A walk may be waiting for the main thread to open its port: joining it there at once
  // would wait for ever.
  mainThread_.waitUntil([&walks] {
    for (const Walk &walk : walks) {
      if (!walk.finished->load()) return false;
    }
    return true;
  });
  for (Walk &walk : walks) walk.thread.join();
}

void DeviceDiscovery::startDiscovery() {
  SystemLog("Looking for devices matching vendor ID=0x%lX and product ID=0x%lX.",
            static_cast<unsigned long>(kCorvamundVendorId),
            static_cast<unsigned long>(kCorvamundProductId));
  if (!registry_->createMatching(kCorvamundVendorId, kCorvamundProductId)) {
    SystemLog("IOServiceMatching returned NULL.");
    return;
  }
  Session *controller = controller_;
  registry_->addFirstMatchNotification([this, controller] { firstMatch(controller); });

  // The first pass over the devices attached now. It only counts them while
  // initialRunning is set, which takes no time; the flag is cleared after it, so that
  // such a device is refused rather than opened.
  const auto firstPass = dispatch([this, controller] { deviceAdded(controller); });
  mainThread_.waitUntil([&firstPass] { return firstPass->load(); });
  if (controller_) controller_->state().initialRunning = false;
}

void DeviceDiscovery::firstMatch(Session *controller) {
  // Called on the main thread: the walk sleeps, so it runs on a thread of its own.
  dispatch([this, controller] { deviceAdded(controller); });
}

void DeviceDiscovery::deviceAdded(Session *controller) {
  if (!controller) {
    SystemLog("session is null.");
    return;
  }
  SessionState &state = controller->state();
  while (const RegistryEntry service = registry_->nextMatch()) {
    SystemLog("Device added.");
    state.deviceExist.fetch_add(1);
    if (state.initialRunning) {
      registry_->release(service);
      continue;
    }

    auto owned = std::make_unique<UsbDeviceRecord>();
    UsbDeviceRecord *record = owned.get();
    record->session = controller;
    {
      // A record stays allocated until its device's removal, or for the life of the
      // program when taking the device in fails below.
      std::lock_guard lock(mutex_);
      records_.push_back(std::move(owned));
    }
    QString name;
    if (!registry_->getName(service, &name)) name.clear();
    record->deviceName = AsciiName(name);
    SystemLog("deviceName:%s", qPrintable(record->deviceName));

    std::unique_ptr<PlugInInterface> plugIn;
    const RegistryResult created = registry_->createPlugInInterface(service, &plugIn);
    if (created != kRegistrySuccess || !plugIn) {
      SystemLog("IOCreatePlugInInterfaceForService returned 0x%08x.",
                static_cast<unsigned>(created));
      continue;
    }
    const RegistryResult queried = plugIn->QueryInterface(&record->deviceInterface);
    plugIn.reset();
    if (queried != kRegistrySuccess || !record->deviceInterface) {
      SystemLog("QueryInterface returned %d.", static_cast<int>(queried));
      continue;
    }
    uint32_t locationID = 0;
    const RegistryResult located = record->deviceInterface->GetLocationID(&locationID);
    if (located != kRegistrySuccess) {
      SystemLog("GetLocationID returned 0x%08x.", static_cast<unsigned>(located));
      continue;
    }
    SystemLog("Location ID: 0x%x", locationID);
    record->locationID = locationID;

    const RegistryResult registered = registry_->addInterestNotification(
        service,
        [this, record](RegistryEntry removed, uint32_t messageType) {
          deviceNotification(record, removed, messageType);
        },
        &record->notification);
    if (registered != kRegistrySuccess) {
      SystemLog("IOServiceAddInterestNotification returned 0x%08x.",
                static_cast<unsigned>(registered));
    }
    findSerialPort(controller, service);
    registry_->release(service);
  }
}

void DeviceDiscovery::deviceNotification(UsbDeviceRecord *record, RegistryEntry,
                                         uint32_t messageType) {
  Session *controller = record->session;
  if (!controller) {
    SystemLog("session is null.");
    return;
  }
  if (messageType != kRegistryServiceTerminated) return;
  SystemLog("Device removed.");
  SystemLog("deviceName:%s,locationID:0x%x", qPrintable(record->deviceName), record->locationID);
  registry_->release(record->notification);
  {
    std::lock_guard lock(mutex_);
    records_.remove_if([record](const auto &held) { return held.get() == record; });
  }
  controller->state().deviceExist.fetch_sub(1);
}

uint8_t DeviceDiscovery::findSerialPort(Session *controller, RegistryEntry service) {
  QStringList levels;
  RegistryProperties properties;
  if (const RegistryResult result = registry_->createProperties(service, &properties);
      result == kRegistrySuccess) {
    levels << DescribeProperties(properties);
  } else {
    SystemLog("GetDeviceInfomation:result %d", static_cast<int>(result));
  }

  // Climb towards the root; at every level search the whole subtree below, which holds
  // the device's own serial node first of all.
  uint8_t found = 0;
  RegistryEntry current = service;
  for (RegistryEntry parent = registry_->parent(service); parent;
       parent = registry_->parent(current)) {
    properties.clear();
    if (registry_->createProperties(parent, &properties) == kRegistrySuccess)
      levels << DescribeProperties(properties);
    if (current != service) registry_->release(current);
    current = parent;
    if (findSerialPortBelow(controller, current, service) == 1) {
      found = 1;
      break;
    }
  }
  if (current != service) registry_->release(current);
  SystemLog("GetDeviceInfomation:0x%08lx = %s", static_cast<unsigned long>(service),
            qPrintable(QStringLiteral("(%1)").arg(levels.join(QStringLiteral(", ")))));
  return found;
}

uint8_t DeviceDiscovery::findSerialPortBelow(Session *controller, RegistryEntry entry,
                                             RegistryEntry device) {
  std::vector<RegistryEntry> children;
  if (const RegistryResult result = registry_->children(entry, &children);
      result != kRegistrySuccess) {
    SystemLog("GetChildDeviceInfomation err %d, device 0x%08lx", static_cast<int>(result),
              static_cast<unsigned long>(entry));
    return 0;
  }
  uint8_t found = 0;
  auto child = children.begin();
  for (; child != children.end() && found != 1; ++child) {
    RegistryProperties properties;
    if (const RegistryResult state = registry_->createProperties(*child, &properties);
        state != kRegistrySuccess) {
      SystemLog("GetChildDeviceInfomation state %d, result %p", static_cast<int>(state),
                static_cast<void *>(nullptr));
      registry_->release(*child);
      continue;
    }
    SystemLog("parent=0x%08lx,object=0x%08lx,result=%s", static_cast<unsigned long>(entry),
              static_cast<unsigned long>(*child), qPrintable(DescribeProperties(properties)));
    if (properties.contains(QLatin1String(kCalloutDeviceKey))) {
      const QString port = properties.value(QLatin1String(kCalloutDeviceKey));
      if (port.isEmpty()) {
        SystemLog("serial port is null. device 0x%08lx", static_cast<unsigned long>(*child));
      } else if (!controller) {
        SystemLog("session is null.");
      } else if (!belongsTo(*child, device)) {
        // Above its own device the search passes the nodes of others on the same hub or
        // controller: a modem or a board that "#kind" must never reach.
        SystemLog("GetChildDeviceInfomation:skip %s, it belongs to another USB device",
                  qPrintable(port));
      } else {
        SystemLog("serial port name is %s", qPrintable(port));
        // A port that will not open leaves the search going over the other children.
        if (!openOnMainThread(controller, port)) found = 1;
      }
    } else {
      found = findSerialPortBelow(controller, *child, device);
    }
    registry_->release(*child);
  }
  for (; child != children.end(); ++child) registry_->release(*child);
  pace();
  return found;
}

bool DeviceDiscovery::belongsTo(RegistryEntry entry, RegistryEntry device) {
  RegistryEntry above = registry_->parent(entry);
  while (above && above != device && !registry_->isUsbDevice(above)) {
    const RegistryEntry next = registry_->parent(above);
    registry_->release(above);
    above = next;
  }
  const bool belongs = above == device;
  if (above) registry_->release(above);
  return belongs;
}

std::optional<QString> DeviceDiscovery::openOnMainThread(Session *controller, const QString &port) {
  std::optional<QString> error;
  mainThread_.run([&] {
    error = portOpener_ ? portOpener_(port, kDeviceBaud)
                        : controller->openSerialPort(port, kDeviceBaud);
  });
  return error;
}

void DeviceDiscovery::pace() {
  if (pacingSleep_) {
    pacingSleep_();
    return;
  }
  std::unique_lock lock(mutex_);
  stopping_.wait_for(lock, kPacing, [this] { return stopped_; });
}
