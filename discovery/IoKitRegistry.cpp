#include "IoKitRegistry.h"

#include <IOKit/IOCFPlugIn.h>
#include <IOKit/usb/IOUSBLib.h>

#include <vector>

namespace {

constexpr const char *kUsbHostDeviceClass = "IOUSBHostDevice";

QString FromCFString(CFStringRef text) {
  const CFIndex size =
      CFStringGetMaximumSizeForEncoding(CFStringGetLength(text), kCFStringEncodingUTF8) + 1;
  std::vector<char> buffer(static_cast<size_t>(size));
  return CFStringGetCString(text, buffer.data(), size, kCFStringEncodingUTF8)
             ? QString::fromUtf8(buffer.data())
             : QString();
}

// A property value as the log shows it: text as it is, numbers in decimal, anything else
// as the system describes it.
QString Describe(CFTypeRef value) {
  if (CFGetTypeID(value) == CFStringGetTypeID())
    return FromCFString(static_cast<CFStringRef>(value));
  if (CFGetTypeID(value) == CFNumberGetTypeID()) {
    SInt64 number = 0;
    CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberSInt64Type, &number);
    return QString::number(number);
  }
  CFStringRef description = CFCopyDescription(value);
  const QString text = FromCFString(description);
  CFRelease(description);
  return text;
}

// The USB IDs go into the matching dictionary as signed 32-bit numbers.
void PutNumber(CFMutableDictionaryRef dictionary, CFStringRef key, uint32_t value) {
  const SInt32 signedValue = static_cast<SInt32>(value);
  if (CFNumberRef number = CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt32Type, &signedValue)) {
    CFDictionarySetValue(dictionary, key, number);
    CFRelease(number);
  }
}

class IoKitUsbDevice : public UsbDeviceInterface {
 public:
  explicit IoKitUsbDevice(IOUSBDeviceInterface **device) : device_(device) {}
  ~IoKitUsbDevice() override { (*device_)->Release(device_); }
  RegistryResult GetLocationID(uint32_t *locationID) override {
    UInt32 location = 0;
    const IOReturn result = (*device_)->GetLocationID(device_, &location);
    *locationID = location;
    return result;
  }

 private:
  IOUSBDeviceInterface **device_;
};

class IoKitPlugIn : public PlugInInterface {
 public:
  explicit IoKitPlugIn(IOCFPlugInInterface **plugIn) : plugIn_(plugIn) {}
  ~IoKitPlugIn() override { IODestroyPlugInInterface(plugIn_); }
  RegistryResult QueryInterface(std::unique_ptr<UsbDeviceInterface> *deviceInterface) override {
    IOUSBDeviceInterface **device = nullptr;
    const HRESULT result = (*plugIn_)->QueryInterface(
        plugIn_, CFUUIDGetUUIDBytes(kIOUSBDeviceInterfaceID), reinterpret_cast<LPVOID *>(&device));
    if (device) *deviceInterface = std::make_unique<IoKitUsbDevice>(device);
    return result;
  }

 private:
  IOCFPlugInInterface **plugIn_;
};

}  // namespace

IoKitRegistry::~IoKitRegistry() {
  if (matching_) CFRelease(matching_);
  std::lock_guard lock(mutex_);
  for (const auto &[notification, registration] : interests_) IOObjectRelease(notification);
  if (addedIterator_) IOObjectRelease(addedIterator_);
  if (notifyPort_) IONotificationPortDestroy(notifyPort_);
}

bool IoKitRegistry::createMatching(uint32_t vendorId, uint32_t productId) {
  matching_ = IOServiceMatching(kUsbHostDeviceClass);
  if (!matching_) return false;
  PutNumber(matching_, CFSTR("idVendor"), vendorId);
  PutNumber(matching_, CFSTR("idProduct"), productId);
  return true;
}

void IoKitRegistry::addFirstMatchNotification(MatchCallback callback) {
  matched_ = std::move(callback);
  notifyPort_ = IONotificationPortCreate(kIOMainPortDefault);
  runLoop_ = CFRunLoopGetMain();
  CFRunLoopAddSource(runLoop_, IONotificationPortGetRunLoopSource(notifyPort_),
                     kCFRunLoopDefaultMode);
  // The registration takes the matching dictionary over.
  IOServiceAddMatchingNotification(notifyPort_, kIOFirstMatchNotification, matching_,
                                   &IoKitRegistry::FirstMatch, this, &addedIterator_);
  matching_ = nullptr;
}

void IoKitRegistry::FirstMatch(void *refcon, io_iterator_t) {
  static_cast<IoKitRegistry *>(refcon)->matched_();
}

RegistryEntry IoKitRegistry::nextMatch() {
  return addedIterator_ ? IOIteratorNext(addedIterator_) : 0;
}

bool IoKitRegistry::getName(RegistryEntry entry, QString *name) {
  io_name_t buffer = {};
  if (IORegistryEntryGetName(entry, buffer) != KERN_SUCCESS) return false;
  *name = QString::fromLatin1(buffer);
  return true;
}

RegistryResult IoKitRegistry::createPlugInInterface(RegistryEntry service,
                                                    std::unique_ptr<PlugInInterface> *plugIn) {
  IOCFPlugInInterface **created = nullptr;
  SInt32 score = 0;
  const kern_return_t result = IOCreatePlugInInterfaceForService(
      service, kIOUSBDeviceUserClientTypeID, kIOCFPlugInInterfaceID, &created, &score);
  if (created) *plugIn = std::make_unique<IoKitPlugIn>(created);
  return result;
}

RegistryResult IoKitRegistry::addInterestNotification(RegistryEntry service,
                                                      InterestCallback callback,
                                                      RegistryEntry *notification) {
  auto registration =
      std::make_unique<InterestRegistration>(InterestRegistration{std::move(callback)});
  io_object_t made = 0;
  // The removal may be delivered on the main thread before this call returns: the callback
  // reaches the registration through refcon, which outlives the map entry made below.
  const kern_return_t result =
      IOServiceAddInterestNotification(notifyPort_, service, kIOGeneralInterest,
                                       &IoKitRegistry::Interest, registration.get(), &made);
  if (result != KERN_SUCCESS) return result;
  *notification = made;
  std::lock_guard lock(mutex_);
  interests_[made] = std::move(registration);
  return result;
}

void IoKitRegistry::Interest(void *refcon, io_service_t service, uint32_t messageType, void *) {
  // A copy: the callback releases the notification, and with it the registration.
  const InterestCallback callback = static_cast<InterestRegistration *>(refcon)->callback;
  callback(service, messageType);
}

RegistryResult IoKitRegistry::createProperties(RegistryEntry entry,
                                               RegistryProperties *properties) {
  CFMutableDictionaryRef dictionary = nullptr;
  const kern_return_t result =
      IORegistryEntryCreateCFProperties(entry, &dictionary, kCFAllocatorDefault, kNilOptions);
  if (result != KERN_SUCCESS) return result;
  if (!dictionary) return kRegistryError;
  const CFIndex count = CFDictionaryGetCount(dictionary);
  std::vector<const void *> keys(static_cast<size_t>(count)), values(static_cast<size_t>(count));
  CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
  for (CFIndex i = 0; i < count; ++i) properties->insert(Describe(keys[i]), Describe(values[i]));
  CFRelease(dictionary);
  return kRegistrySuccess;
}

RegistryEntry IoKitRegistry::parent(RegistryEntry entry) {
  io_registry_entry_t found = 0;
  return IORegistryEntryGetParentEntry(entry, kIOServicePlane, &found) == KERN_SUCCESS ? found : 0;
}

RegistryResult IoKitRegistry::children(RegistryEntry entry, std::vector<RegistryEntry> *children) {
  io_iterator_t iterator = 0;
  if (const kern_return_t result =
          IORegistryEntryGetChildIterator(entry, kIOServicePlane, &iterator);
      result != KERN_SUCCESS)
    return result;
  while (const io_object_t child = IOIteratorNext(iterator)) children->push_back(child);
  IOObjectRelease(iterator);
  return kRegistrySuccess;
}

bool IoKitRegistry::isUsbDevice(RegistryEntry entry) {
  // Interfaces repeat their device's IDs, but they carry an interface number as well.
  RegistryProperties properties;
  return createProperties(entry, &properties) == kRegistrySuccess &&
         properties.contains(QStringLiteral("idVendor")) &&
         properties.contains(QStringLiteral("idProduct")) &&
         !properties.contains(QStringLiteral("bInterfaceNumber"));
}

void IoKitRegistry::release(RegistryEntry entry) {
  std::unique_ptr<InterestRegistration> ended;
  {
    std::lock_guard lock(mutex_);
    if (auto found = interests_.find(entry); found != interests_.end()) {
      ended = std::move(found->second);
      interests_.erase(found);
    }
  }
  IOObjectRelease(entry);
}
