// The IOKit and CoreFoundation double. Registry references are counted; memory is plain new
// and delete with one owner, for the sanitizer build to find leaks and double frees. No
// lock: the test's walks run one at a time, each started and joined by the test's thread.
#include "FakeIoKit.h"

#include <IOKit/IOCFPlugIn.h>
#include <IOKit/usb/IOUSBLib.h>

#include <cstring>
#include <deque>
#include <functional>
#include <utility>
#include <vector>

struct __CFRunLoop {};
struct __CFRunLoopSource {
  bool onMainLoop = false;
};
struct IONotificationPort : __CFRunLoopSource {};
struct __CFUUID : CFUUIDBytes {};

namespace {

enum : CFTypeID { kString = 7, kDictionary = 18, kNumber = 22 };

// Every CF object is one of these; a dictionary owns copies of what is put in it.
struct CfObject {
  CFTypeID type;
  std::string text{};
  int64_t number = 0;
  std::vector<CfObject> keys{}, values{};
};

CfObject &Cf(CFTypeRef ref) {
  return *static_cast<CfObject *>(const_cast<void *>(ref));
}

template <typename Ref>
Ref Make(CfObject object) {
  return static_cast<Ref>(static_cast<void *>(new CfObject(std::move(object))));
}

// An entry of the tree, an iterator or an interest notification, with the references
// handed out on it. An arrival iterator calls back when an entry arrives after it drained.
struct Object {
  int references = 0;
  std::string className{};
  fake_iokit::Properties properties{};
  io_object_t parent = 0;
  std::deque<io_object_t> children{}, pending{};
  CfObject matching{};
  std::function<void(io_iterator_t)> arrived{};
  bool armed = false;
};

std::deque<Object> g_objects;  // handle n is g_objects[n - 1]; references to it stay valid
std::vector<std::function<void()>> g_mainLoop;  // arrival callbacks due
int g_badReleases = 0;
constexpr kern_return_t kFailed = kern_return_t(0xE00002BC);

Object &At(io_object_t handle) {
  return g_objects.at(handle - 1);
}

io_object_t New(Object object) {
  g_objects.push_back(std::move(object));
  return io_object_t(g_objects.size());
}

bool Matches(const CfObject &matching, const Object &entry) {
  for (size_t i = 0; i < matching.keys.size(); ++i) {
    const std::string &key = matching.keys[i].text;
    const auto found = entry.properties.find(key);
    if (key == "IOProviderClass"
            ? matching.values[i].text != entry.className
            : found == entry.properties.end() ||
                  found->second != decltype(found->second)(matching.values[i].number))
      return false;
  }
  return true;
}

bool SameUuid(CFUUIDBytes a, CFUUIDRef b) {
  return std::memcmp(&a, static_cast<const CFUUIDBytes *>(b), sizeof a) == 0;
}

// A plug-in or device interface: callers hold a pointer to its first member, the table.
template <typename Table>
struct Com {
  Table *table;
  io_service_t service;
  static ULONG Release(void *self) {
    delete static_cast<Com *>(self);
    return 0;
  }
};

IOUSBDeviceInterface g_deviceTable = {
    nullptr, nullptr, nullptr, Com<IOUSBDeviceInterface>::Release,
    [](void *self, UInt32 *locationID) -> IOReturn {
      const Object &entry = At(static_cast<Com<IOUSBDeviceInterface> *>(self)->service);
      *locationID = UInt32(std::get<int64_t>(entry.properties.at("locationID")));
      return KERN_SUCCESS;
    }};

IOCFPlugInInterface g_plugInTable = {
    nullptr,
    [](void *self, REFIID iid, LPVOID *ppv) -> HRESULT {
      const io_service_t service = static_cast<Com<IOCFPlugInInterface> *>(self)->service;
      *ppv = SameUuid(iid, kIOUSBDeviceInterfaceID)
                 ? new Com<IOUSBDeviceInterface>{&g_deviceTable, service}
                 : nullptr;
      return *ppv ? 0 : HRESULT(0x80000004);
    },
    nullptr, Com<IOCFPlugInInterface>::Release};

}  // namespace

namespace fake_iokit {

io_object_t AddEntry(io_object_t parent, const std::string &className, Properties properties) {
  const io_object_t handle =
      New({.className = className, .properties = std::move(properties), .parent = parent});
  if (parent) At(parent).children.push_back(handle);
  for (io_iterator_t iterator = 1; iterator < handle; ++iterator) {
    Object &arrivals = At(iterator);
    if (!arrivals.arrived || !Matches(arrivals.matching, At(handle))) continue;
    arrivals.pending.push_back(handle);
    if (std::exchange(arrivals.armed, false))
      g_mainLoop.push_back([&arrivals, iterator] { arrivals.arrived(iterator); });
  }
  return handle;
}

void RunMainLoop() {
  for (const auto &deliver : std::exchange(g_mainLoop, {})) deliver();
}

std::string Leaks() {
  int references = 0;
  for (const Object &object : g_objects) references += object.references;
  return (references ? std::to_string(references) + " references held; " : "") +
         (g_badReleases ? std::to_string(g_badReleases) + " releases of what was not held" : "");
}

}  // namespace fake_iokit

// CoreFoundation

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFRunLoopMode kCFRunLoopDefaultMode = CFSTR("kCFRunLoopDefaultMode");

CFStringRef __CFStringMakeConstantString(const char *cStr) {
  static std::deque<CfObject> constants;  // never freed, as the system's
  return static_cast<CFStringRef>(
      static_cast<void *>(&constants.emplace_back(CfObject{kString, cStr})));
}

void CFRelease(CFTypeRef cf) {
  delete &Cf(cf);
}

CFTypeID CFGetTypeID(CFTypeRef cf) {
  return Cf(cf).type;
}

CFStringRef CFCopyDescription(CFTypeRef) {
  return Make<CFStringRef>({kString, "<object>"});
}

CFTypeID CFStringGetTypeID(void) {
  return kString;
}

CFIndex CFStringGetLength(CFStringRef theString) {
  return CFIndex(Cf(theString).text.size());
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding) {
  return length * 3;
}

Boolean CFStringGetCString(CFStringRef theString, char *buffer, CFIndex bufferSize,
                           CFStringEncoding) {
  const std::string &text = Cf(theString).text;
  if (CFIndex(text.size()) >= bufferSize) return false;
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  return true;
}

CFTypeID CFNumberGetTypeID(void) {
  return kNumber;
}

// Only the types the product uses are known: another one is a fault to show up.
CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType theType, const void *valuePtr) {
  if (theType != kCFNumberSInt32Type) return nullptr;
  return Make<CFNumberRef>({kNumber, {}, *static_cast<const int32_t *>(valuePtr)});
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void *valuePtr) {
  if (theType != kCFNumberSInt64Type) return false;
  *static_cast<int64_t *>(valuePtr) = Cf(number).number;
  return true;
}

CFIndex CFDictionaryGetCount(CFDictionaryRef theDict) {
  return CFIndex(Cf(theDict).keys.size());
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef theDict, const void **keys, const void **values) {
  CfObject &dictionary = Cf(theDict);
  for (size_t i = 0; i < dictionary.keys.size(); ++i)
    keys[i] = &dictionary.keys[i], values[i] = &dictionary.values[i];
}

void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void *key, const void *value) {
  Cf(theDict).keys.push_back(Cf(key));
  Cf(theDict).values.push_back(Cf(value));
}

CFRunLoopRef CFRunLoopGetMain(void) {
  static __CFRunLoop main;
  return &main;
}

void CFRunLoopAddSource(CFRunLoopRef rl, CFRunLoopSourceRef source, CFRunLoopMode mode) {
  source->onMainLoop = rl == CFRunLoopGetMain() && mode == kCFRunLoopDefaultMode;
}

CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef, UInt8 byte0, UInt8 byte1, UInt8 byte2,
                                         UInt8 byte3, UInt8 byte4, UInt8 byte5, UInt8 byte6,
                                         UInt8 byte7, UInt8 byte8, UInt8 byte9, UInt8 byte10,
                                         UInt8 byte11, UInt8 byte12, UInt8 byte13, UInt8 byte14,
                                         UInt8 byte15) {
  static std::deque<__CFUUID> constants;  // never freed, as the system's
  return &constants.emplace_back(
      __CFUUID{{byte0, byte1, byte2, byte3, byte4, byte5, byte6, byte7, byte8, byte9, byte10,
                byte11, byte12, byte13, byte14, byte15}});
}

CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid) {
  return *uuid;
}

// IOKit

const mach_port_t kIOMainPortDefault = 0;

CFMutableDictionaryRef IOServiceMatching(const char *name) {
  return Make<CFMutableDictionaryRef>(
      {kDictionary, {}, 0, {{kString, "IOProviderClass"}}, {{kString, name}}});
}

IONotificationPortRef IONotificationPortCreate(mach_port_t) {
  return new IONotificationPort;
}

void IONotificationPortDestroy(IONotificationPortRef notify) {
  delete notify;
}

CFRunLoopSourceRef IONotificationPortGetRunLoopSource(IONotificationPortRef notify) {
  return notify;
}

// The registration takes the matching dictionary over: it keeps a copy and frees it.
kern_return_t IOServiceAddMatchingNotification(IONotificationPortRef notifyPort, const io_name_t,
                                               CFDictionaryRef matching,
                                               IOServiceMatchingCallback callback, void *refCon,
                                               io_iterator_t *notification) {
  Object iterator{.references = 1, .matching = Cf(matching), .arrived = [=](io_iterator_t it) {
                    if (notifyPort->onMainLoop) callback(refCon, it);
                  }};
  CFRelease(matching);
  for (io_object_t handle = 1; handle <= g_objects.size(); ++handle)
    if (Matches(iterator.matching, At(handle))) iterator.pending.push_back(handle);
  *notification = New(std::move(iterator));
  return KERN_SUCCESS;
}

kern_return_t IOServiceAddInterestNotification(IONotificationPortRef, io_service_t, const io_name_t,
                                               IOServiceInterestCallback, void *,
                                               io_object_t *notification) {
  *notification = New({.references = 1});
  return KERN_SUCCESS;
}

io_object_t IOIteratorNext(io_iterator_t iterator) {
  Object &it = At(iterator);
  it.armed = it.arrived && it.pending.empty();
  if (it.pending.empty()) return 0;
  const io_object_t next = it.pending.front();
  it.pending.pop_front();
  ++At(next).references;
  return next;
}

kern_return_t IOObjectRelease(io_object_t object) {
  if (object == 0 || object > g_objects.size() || At(object).references == 0)
    return ++g_badReleases, kFailed;
  --At(object).references;
  return KERN_SUCCESS;
}

kern_return_t IORegistryEntryGetName(io_registry_entry_t entry, io_name_t name) {
  std::strncpy(name, At(entry).className.c_str(), sizeof(io_name_t) - 1);
  return KERN_SUCCESS;
}

kern_return_t IORegistryEntryCreateCFProperties(io_registry_entry_t entry,
                                                CFMutableDictionaryRef *properties, CFAllocatorRef,
                                                IOOptionBits) {
  CfObject dictionary{kDictionary};
  for (const auto &[key, value] : At(entry).properties) {
    dictionary.keys.push_back({kString, key});
    const auto *number = std::get_if<int64_t>(&value);
    dictionary.values.push_back(number ? CfObject{kNumber, {}, *number}
                                       : CfObject{kString, std::get<std::string>(value)});
  }
  *properties = Make<CFMutableDictionaryRef>(std::move(dictionary));
  return KERN_SUCCESS;
}

kern_return_t IORegistryEntryGetParentEntry(io_registry_entry_t entry, const io_name_t,
                                            io_registry_entry_t *parent) {
  if (!(*parent = At(entry).parent)) return kFailed;
  ++At(*parent).references;
  return KERN_SUCCESS;
}

kern_return_t IORegistryEntryGetChildIterator(io_registry_entry_t entry, const io_name_t,
                                              io_iterator_t *iterator) {
  *iterator = New({.references = 1, .pending = At(entry).children});
  return KERN_SUCCESS;
}

kern_return_t IOCreatePlugInInterfaceForService(io_service_t service, CFUUIDRef pluginType,
                                                CFUUIDRef interfaceType,
                                                IOCFPlugInInterface ***theInterface,
                                                SInt32 *theScore) {
  if (!SameUuid(CFUUIDGetUUIDBytes(pluginType), kIOUSBDeviceUserClientTypeID) ||
      !SameUuid(CFUUIDGetUUIDBytes(interfaceType), kIOCFPlugInInterfaceID))
    return kFailed;
  *theInterface = &(new Com<IOCFPlugInInterface>{&g_plugInTable, service})->table;
  *theScore = 0;
  return KERN_SUCCESS;
}

kern_return_t IODestroyPlugInInterface(IOCFPlugInInterface **interface) {
  (*interface)->Release(interface);
  return KERN_SUCCESS;
}
