// The IOKit and CoreFoundation test double: a registry tree in memory and a main run loop
// that the test turns. Registry references are counted here; memory (CoreFoundation
// objects, plug-ins, ports) is plain new and delete, so the sanitizer build finds what the
// code under test leaks or frees twice.
#include "FakeIoKit.h"

#include <IOKit/IOCFPlugIn.h>
#include <IOKit/usb/IOUSBLib.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <functional>
#include <list>
#include <mutex>
#include <utility>
#include <vector>

enum : CFTypeID { kStringType = 7, kDictionaryType = 18, kNumberType = 22 };

// A string, a number or a dictionary. Constants are never freed.
struct CfObject {
  virtual ~CfObject() = default;
  CFTypeID type = 0;
  std::string text;
  int64_t number = 0;
  std::vector<std::pair<CFTypeRef, CFTypeRef>> pairs;
  bool constant = false;
  int references = 1;
};
struct __CFString : CfObject {};
struct __CFNumber : CfObject {};
struct __CFDictionary : CfObject {};
struct __CFRunLoop {};
struct __CFRunLoopSource {
  bool onMainLoop = false;
};
struct IONotificationPort {
  __CFRunLoopSource source;
};
struct __CFUUID {
  CFUUIDBytes bytes;
};

namespace {

// One lock for the tree, the run loop and the objects: walks run on threads of their own.
std::recursive_mutex g_mutex;

template <typename T>
T *Make(CFTypeID type, std::string text = {}, int64_t number = 0) {
  T *made = new T;
  made->type = type, made->text = std::move(text), made->number = number;
  return made;
}

CfObject &Cf(CFTypeRef ref) {
  return *const_cast<CfObject *>(static_cast<const CfObject *>(ref));
}

// One object of the registry: an entry of the tree, an iterator or an interest
// notification (never delivered here: removals are tested on the virtual USB bus), with
// the number of references handed out on it.
struct Object {
  explicit Object(int references = 0, std::deque<io_object_t> pending = {})
      : references(references), pending(std::move(pending)) {}
  int references;
  std::string className, name;  // an entry
  fake_iokit::Properties properties;
  io_object_t parent = 0;
  std::vector<io_object_t> children;
  std::deque<io_object_t> pending;     // an iterator
  CFDictionaryRef matching = nullptr;  // an arrival iterator, which calls back once drained
  bool armed = false;
  IONotificationPortRef port = nullptr;
  IOServiceMatchingCallback callback = nullptr;
  void *refcon = nullptr;
};

std::map<io_object_t, Object> g_objects;
io_object_t g_nextHandle = 0x1003, g_root = 0;
int g_badReleases = 0;
std::deque<std::pair<IONotificationPortRef, std::function<void()>>> g_mainLoop;

io_object_t New(Object object) {
  g_objects[g_nextHandle] = std::move(object);
  return g_nextHandle++;
}

bool Matches(CFDictionaryRef matching, const Object &entry) {
  for (const auto &[key, value] : matching->pairs) {
    const auto found = entry.properties.find(Cf(key).text);
    if (Cf(key).text == "IOProviderClass"
            ? Cf(value).text != entry.className
            : found == entry.properties.end() ||
                  found->second != decltype(found->second)(Cf(value).number))
      return false;
  }
  return true;
}

void Subtree(io_object_t handle, std::vector<io_object_t> *out) {
  out->push_back(handle);
  for (io_object_t child : g_objects[handle].children) Subtree(child, out);
}

bool SameUuid(CFUUIDBytes a, CFUUIDRef b) {
  return std::memcmp(&a, &b->bytes, sizeof a) == 0;
}

// A plug-in or device interface. The table pointer comes first, so the pointer callers
// hold (a pointer to that member) is also a pointer to the whole object.
template <typename Table>
struct Com {
  Table *table;
  io_service_t service;
  ULONG references = 1;
  static ULONG AddRef(void *self) { return ++static_cast<Com *>(self)->references; }
  static ULONG Release(void *self) {
    std::lock_guard lock(g_mutex);
    auto *object = static_cast<Com *>(self);
    if (--object->references == 0) delete object;
    return 0;
  }
};
using PlugIn = Com<IOCFPlugInInterface>;
using Device = Com<IOUSBDeviceInterface>;

IOUSBDeviceInterface g_deviceTable = {
    nullptr, [](void *, REFIID, LPVOID *) -> HRESULT { return E_NOINTERFACE; }, Device::AddRef,
    Device::Release,
    [](void *self, UInt32 *locationID) -> IOReturn {
      std::lock_guard lock(g_mutex);
      const Object &entry = g_objects[static_cast<Device *>(self)->service];
      *locationID = UInt32(std::get<int64_t>(entry.properties.at("locationID")));
      return kIOReturnSuccess;
    }};

IOCFPlugInInterface g_plugInTable = {
    nullptr,
    [](void *self, REFIID iid, LPVOID *ppv) -> HRESULT {
      if (!SameUuid(iid, kIOUSBDeviceInterfaceID)) return *ppv = nullptr, E_NOINTERFACE;
      *ppv = &(new Device{&g_deviceTable, static_cast<PlugIn *>(self)->service})->table;
      return S_OK;
    },
    PlugIn::AddRef,
    PlugIn::Release,
    1,
    0,
    nullptr,
    nullptr,
    nullptr};

}  // namespace

namespace fake_iokit {

io_object_t AddEntry(io_object_t parent, const std::string &className, const std::string &name,
                     Properties properties) {
  std::lock_guard lock(g_mutex);
  Object entry;
  entry.className = className, entry.name = name, entry.properties = std::move(properties);
  entry.parent = parent ? parent : g_root;
  const io_object_t handle = New(std::move(entry));
  g_objects[g_objects[handle].parent].children.push_back(handle);
  for (auto &[iterator, arrivals] : g_objects) {
    if (!arrivals.matching || !Matches(arrivals.matching, g_objects[handle])) continue;
    arrivals.pending.push_back(handle);
    if (std::exchange(arrivals.armed, false)) {
      g_mainLoop.emplace_back(
          arrivals.port, [&arrivals, iterator] { arrivals.callback(arrivals.refcon, iterator); });
    }
  }
  return handle;
}

void RunMainLoop() {
  std::unique_lock lock(g_mutex);
  for (;;) {
    auto ready = std::find_if(g_mainLoop.begin(), g_mainLoop.end(),
                              [](const auto &item) { return item.first->source.onMainLoop; });
    if (ready == g_mainLoop.end()) return;
    const std::function<void()> work = std::move(ready->second);
    g_mainLoop.erase(ready);
    lock.unlock();
    work();
    lock.lock();
  }
}

std::string Leaks() {
  std::lock_guard lock(g_mutex);
  int references = 0;
  for (const auto &[handle, object] : g_objects) references += object.references;
  return (references ? std::to_string(references) + " references held; " : "") +
         (g_badReleases ? std::to_string(g_badReleases) + " releases of what was not held" : "");
}

void Reset() {
  std::lock_guard lock(g_mutex);
  g_objects.clear(), g_mainLoop.clear();
  g_badReleases = 0;
  Object root;
  root.className = "IORegistryEntry", root.name = "Root";
  g_root = New(std::move(root));
}

}  // namespace fake_iokit

// CoreFoundation

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFRunLoopMode kCFRunLoopDefaultMode = CFSTR("kCFRunLoopDefaultMode");

CFStringRef __CFStringMakeConstantString(const char *cStr) {
  std::lock_guard lock(g_mutex);
  static std::map<std::string, __CFString> interned;
  __CFString &string = interned[cStr];
  string.type = kStringType, string.text = cStr, string.constant = true;
  return &string;
}

void CFRelease(CFTypeRef cf) {
  std::lock_guard lock(g_mutex);
  CfObject &object = Cf(cf);
  if (object.constant || --object.references > 0) return;
  for (auto &[key, value] : object.pairs) CFRelease(key), CFRelease(value);
  delete &object;
}

CFTypeID CFGetTypeID(CFTypeRef cf) {
  return Cf(cf).type;
}

CFStringRef CFCopyDescription(CFTypeRef) {
  return Make<__CFString>(kStringType, "<object>");
}

CFTypeID CFStringGetTypeID(void) {
  return kStringType;
}

CFIndex CFStringGetLength(CFStringRef theString) {
  return CFIndex(theString->text.size());
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding) {
  return length * 3;
}

Boolean CFStringGetCString(CFStringRef theString, char *buffer, CFIndex bufferSize,
                           CFStringEncoding) {
  if (CFIndex(theString->text.size()) >= bufferSize) return false;
  std::memcpy(buffer, theString->text.c_str(), theString->text.size() + 1);
  return true;
}

CFTypeID CFNumberGetTypeID(void) {
  return kNumberType;
}

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType theType, const void *valuePtr) {
  return Make<__CFNumber>(kNumberType, {},
                          theType == kCFNumberSInt32Type ? *static_cast<const int32_t *>(valuePtr)
                                                         : *static_cast<const int64_t *>(valuePtr));
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void *valuePtr) {
  if (theType == kCFNumberSInt32Type) *static_cast<int32_t *>(valuePtr) = int32_t(number->number);
  if (theType == kCFNumberSInt64Type) *static_cast<int64_t *>(valuePtr) = number->number;
  return true;
}

CFIndex CFDictionaryGetCount(CFDictionaryRef theDict) {
  return CFIndex(theDict->pairs.size());
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef theDict, const void **keys, const void **values) {
  for (size_t i = 0; i < theDict->pairs.size(); ++i)
    keys[i] = theDict->pairs[i].first, values[i] = theDict->pairs[i].second;
}

void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void *key, const void *value) {
  ++Cf(key).references, ++Cf(value).references;
  theDict->pairs.emplace_back(key, value);
}

CFRunLoopRef CFRunLoopGetMain(void) {
  static __CFRunLoop main;
  return &main;
}

void CFRunLoopAddSource(CFRunLoopRef rl, CFRunLoopSourceRef source, CFRunLoopMode mode) {
  std::lock_guard lock(g_mutex);
  source->onMainLoop = rl == CFRunLoopGetMain() && mode == kCFRunLoopDefaultMode;
}

CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef, UInt8 byte0, UInt8 byte1, UInt8 byte2,
                                         UInt8 byte3, UInt8 byte4, UInt8 byte5, UInt8 byte6,
                                         UInt8 byte7, UInt8 byte8, UInt8 byte9, UInt8 byte10,
                                         UInt8 byte11, UInt8 byte12, UInt8 byte13, UInt8 byte14,
                                         UInt8 byte15) {
  std::lock_guard lock(g_mutex);
  static std::list<__CFUUID> constants;
  const CFUUIDBytes bytes{byte0, byte1, byte2,  byte3,  byte4,  byte5,  byte6,  byte7,
                          byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15};
  const auto found = std::find_if(constants.begin(), constants.end(),
                                  [&](const __CFUUID &uuid) { return SameUuid(bytes, &uuid); });
  return found != constants.end() ? &*found : &constants.emplace_back(bytes);
}

CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid) {
  return uuid->bytes;
}

// IOKit

const mach_port_t kIOMainPortDefault = MACH_PORT_NULL;

CFMutableDictionaryRef IOServiceMatching(const char *name) {
  auto *matching = Make<__CFDictionary>(kDictionaryType);
  matching->pairs.emplace_back(CFSTR("IOProviderClass"), Make<__CFString>(kStringType, name));
  return matching;
}

IONotificationPortRef IONotificationPortCreate(mach_port_t) {
  return new IONotificationPort;
}

void IONotificationPortDestroy(IONotificationPortRef notify) {
  std::lock_guard lock(g_mutex);
  // Its arrival registrations end with it; their iterators stay the caller's to release.
  for (auto &[handle, object] : g_objects) {
    if (object.port == notify && object.matching) CFRelease(std::exchange(object.matching, {}));
  }
  std::erase_if(g_mainLoop, [notify](const auto &item) { return item.first == notify; });
  delete notify;
}

CFRunLoopSourceRef IONotificationPortGetRunLoopSource(IONotificationPortRef notify) {
  return &notify->source;
}

kern_return_t IOServiceAddMatchingNotification(IONotificationPortRef notifyPort, const io_name_t,
                                               CFDictionaryRef matching,
                                               IOServiceMatchingCallback callback, void *refCon,
                                               io_iterator_t *notification) {
  std::lock_guard lock(g_mutex);
  Object iterator(1);
  iterator.matching = matching, iterator.port = notifyPort;
  iterator.callback = callback, iterator.refcon = refCon;
  std::vector<io_object_t> present;
  Subtree(g_root, &present);
  for (io_object_t handle : present) {
    if (Matches(matching, g_objects[handle])) iterator.pending.push_back(handle);
  }
  *notification = New(std::move(iterator));
  return KERN_SUCCESS;
}

kern_return_t IOServiceAddInterestNotification(IONotificationPortRef, io_service_t, const io_name_t,
                                               IOServiceInterestCallback, void *,
                                               io_object_t *notification) {
  std::lock_guard lock(g_mutex);
  *notification = New(Object(1));
  return KERN_SUCCESS;
}

io_object_t IOIteratorNext(io_iterator_t iterator) {
  std::lock_guard lock(g_mutex);
  Object &it = g_objects.at(iterator);
  it.armed = it.matching && it.pending.empty();
  if (it.pending.empty()) return 0;
  const io_object_t next = it.pending.front();
  it.pending.pop_front();
  ++g_objects[next].references;
  return next;
}

kern_return_t IOObjectRelease(io_object_t object) {
  std::lock_guard lock(g_mutex);
  const auto found = g_objects.find(object);
  if (found == g_objects.end() || found->second.references == 0) return ++g_badReleases;
  --found->second.references;
  return KERN_SUCCESS;
}

kern_return_t IORegistryEntryGetName(io_registry_entry_t entry, io_name_t name) {
  std::lock_guard lock(g_mutex);
  std::strncpy(name, g_objects.at(entry).name.c_str(), sizeof(io_name_t) - 1);
  return KERN_SUCCESS;
}

kern_return_t IORegistryEntryCreateCFProperties(io_registry_entry_t entry,
                                                CFMutableDictionaryRef *properties, CFAllocatorRef,
                                                IOOptionBits) {
  std::lock_guard lock(g_mutex);
  *properties = Make<__CFDictionary>(kDictionaryType);
  for (const auto &[key, value] : g_objects.at(entry).properties) {
    const auto *number = std::get_if<int64_t>(&value);
    (*properties)
        ->pairs.emplace_back(Make<__CFString>(kStringType, key),
                             number ? CFTypeRef(Make<__CFNumber>(kNumberType, {}, *number))
                                    : Make<__CFString>(kStringType, std::get<std::string>(value)));
  }
  return KERN_SUCCESS;
}

kern_return_t IORegistryEntryGetParentEntry(io_registry_entry_t entry, const io_name_t,
                                            io_registry_entry_t *parent) {
  std::lock_guard lock(g_mutex);
  if (!(*parent = g_objects.at(entry).parent)) return kIOReturnNoDevice;
  ++g_objects[*parent].references;
  return KERN_SUCCESS;
}

kern_return_t IORegistryEntryGetChildIterator(io_registry_entry_t entry, const io_name_t,
                                              io_iterator_t *iterator) {
  std::lock_guard lock(g_mutex);
  const std::vector<io_object_t> &children = g_objects.at(entry).children;
  *iterator = New(Object(1, {children.begin(), children.end()}));
  return KERN_SUCCESS;
}

kern_return_t IOCreatePlugInInterfaceForService(io_service_t service, CFUUIDRef pluginType,
                                                CFUUIDRef interfaceType,
                                                IOCFPlugInInterface ***theInterface,
                                                SInt32 *theScore) {
  if (!SameUuid(CFUUIDGetUUIDBytes(pluginType), kIOUSBDeviceUserClientTypeID) ||
      !SameUuid(CFUUIDGetUUIDBytes(interfaceType), kIOCFPlugInInterfaceID))
    return kIOReturnUnsupported;
  *theInterface = &(new PlugIn{&g_plugInTable, service})->table;
  *theScore = 0;
  return KERN_SUCCESS;
}

kern_return_t IODestroyPlugInInterface(IOCFPlugInInterface **interface) {
  (*interface)->Release(interface);
  return KERN_SUCCESS;
}
