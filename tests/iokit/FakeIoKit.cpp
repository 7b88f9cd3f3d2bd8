// The IOKit and CoreFoundation test double: a registry tree in memory, reference-counted
// objects that count what is outstanding, and a main run loop that the test turns.
#include "FakeIoKit.h"

#include <IOKit/IOMessage.h>
#include <IOKit/usb/IOUSBLib.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <utility>

namespace fake_iokit::detail {

enum : CFTypeID { kOtherType = 1, kStringType = 7, kDictionaryType = 18, kNumberType = 22 };
std::atomic<int> g_cfObjects{0};

// Every CoreFoundation object of the double. Constants are neither counted nor freed.
struct CfObject {
  CfObject(CFTypeID type, bool constant) : type(type), constant(constant) {
    g_cfObjects += !constant;
  }
  virtual ~CfObject() { g_cfObjects -= !constant; }
  const CFTypeID type;
  const bool constant;
  std::atomic<int> references{1};
};

}  // namespace fake_iokit::detail

using fake_iokit::detail::CfObject;
using namespace fake_iokit::detail;

struct __CFString : CfObject {
  __CFString(std::string text, bool constant) : CfObject(kStringType, constant), text(text) {}
  const std::string text;
};
struct __CFNumber : CfObject {
  explicit __CFNumber(int64_t value) : CfObject(kNumberType, false), value(value) {}
  const int64_t value;
};
struct __CFDictionary : CfObject {
  __CFDictionary() : CfObject(kDictionaryType, false) {}
  ~__CFDictionary() override {
    for (auto &[key, value] : pairs) CFRelease(key), CFRelease(value);
  }
  std::vector<std::pair<CFTypeRef, CFTypeRef>> pairs;
};
struct __CFRunLoop : CfObject {
  __CFRunLoop() : CfObject(kOtherType, true) {}
};
struct __CFRunLoopSource : CfObject {
  explicit __CFRunLoopSource(IONotificationPort *port) : CfObject(kOtherType, true), port(port) {}
  IONotificationPort *const port;
};
struct __CFUUID : CfObject {
  explicit __CFUUID(CFUUIDBytes bytes) : CfObject(kOtherType, true), bytes(bytes) {}
  const CFUUIDBytes bytes;
};

struct IONotificationPort {
  __CFRunLoopSource source{this};
  bool onMainLoop = false;
  bool destroyed = false;
};

namespace fake_iokit {
namespace {

std::string Text(CFTypeRef ref) {
  return static_cast<const CfObject *>(ref)->type == kStringType
             ? static_cast<CFStringRef>(ref)->text
             : std::string();
}

bool SameUuid(CFUUIDBytes a, CFUUIDRef b) {
  return std::memcmp(&a, &b->bytes, sizeof a) == 0;
}

// One object of the registry: an entry of the tree, an iterator or an interest
// notification, with the number of references handed out on it.
struct Object {
  enum Kind { kEntry, kIterator, kNotification };
  explicit Object(Kind kind = kEntry, int references = 0) : kind(kind), references(references) {}
  Kind kind;
  int references;
  // an entry
  std::string className, name;
  Properties properties;
  Behaviour behaviour;
  io_object_t parent = 0;
  std::vector<io_object_t> children;
  bool inTree = true;
  // an iterator; an arrival iterator calls back on the next arrival once it is drained
  std::deque<io_object_t> pending;
  bool arrivals = false, armed = false;
  // a notification, or the registration behind an arrival iterator
  IONotificationPort *port = nullptr;
  io_service_t service = 0;
  IOServiceInterestCallback interest = nullptr;
  IOServiceMatchingCallback matched = nullptr;
  void *refcon = nullptr;
  CFDictionaryRef matching = nullptr;
};

struct Registry {
  std::mutex mutex;
  std::map<io_object_t, Object> objects;
  io_object_t nextHandle = 0x1003, root = 0;
  std::list<IONotificationPort> ports;  // kept until Reset: queued work checks them
  std::deque<std::pair<IONotificationPort *, std::function<void()>>> mainLoop;
  std::function<void()> iteratorHook;
  std::vector<std::string> misuse;
  int livePorts = 0;
} g;

std::atomic<int> g_plugIns{0}, g_deviceInterfaces{0};
Held g_baseline;

io_object_t New(Object object) {
  g.objects[g.nextHandle] = std::move(object);
  return g.nextHandle++;
}

// The object behind a handle the code under test passed in; misuse when there is none.
Object *Find(io_object_t handle, Object::Kind kind, const char *call) {
  auto found = g.objects.find(handle);
  if (found != g.objects.end() && found->second.kind == kind) return &found->second;
  g.misuse.push_back(std::string(call) + " on " + std::to_string(handle));
  return nullptr;
}

bool Matches(CFDictionaryRef matching, const Object &entry) {
  for (const auto &[key, value] : matching->pairs) {
    if (Text(key) == "IOProviderClass") {
      if (Text(value) != entry.className) return false;
      continue;
    }
    auto property = entry.properties.find(Text(key));
    const auto *number =
        property == entry.properties.end() ? nullptr : std::get_if<int64_t>(&property->second);
    if (!number || *number != static_cast<CFNumberRef>(value)->value) return false;
  }
  return true;
}

void Subtree(io_object_t handle, std::vector<io_object_t> *out) {
  out->push_back(handle);
  for (io_object_t child : g.objects[handle].children) Subtree(child, out);
}

Behaviour BehaviourOf(io_service_t service) {
  std::lock_guard lock(g.mutex);
  return g.objects[service].behaviour;
}

// A plug-in or device interface. The interface table pointer comes first, so the pointer
// that callers hold (a pointer to that member) is also a pointer to the whole object.
template <typename Table>
struct ComObject {
  Table *table;
  std::atomic<ULONG> references{1};
  io_service_t service;
};
using PlugInObject = ComObject<IOCFPlugInInterface>;
using DeviceObject = ComObject<IOUSBDeviceInterface>;

template <typename Object>
ULONG AddRef(void *self) {
  return ++static_cast<Object *>(self)->references;
}

template <typename Object>
ULONG Release(void *self, std::atomic<int> &live) {
  auto *object = static_cast<Object *>(self);
  const ULONG left = --object->references;
  if (left == 0) delete object, --live;
  return left;
}

IOUSBDeviceInterface g_deviceTable = {
    nullptr,
    [](void *, REFIID, LPVOID *ppv) -> HRESULT { return *ppv = nullptr, E_NOINTERFACE; },
    AddRef<DeviceObject>,
    [](void *self) { return Release<DeviceObject>(self, g_deviceInterfaces); },
    [](void *self, UInt32 *locationID) -> IOReturn {
      const Behaviour behaviour = BehaviourOf(static_cast<DeviceObject *>(self)->service);
      if (behaviour.locationResult == kIOReturnSuccess) *locationID = behaviour.locationID;
      return behaviour.locationResult;
    },
};

IOCFPlugInInterface g_plugInTable = {
    nullptr,
    [](void *self, REFIID iid, LPVOID *ppv) -> HRESULT {
      *ppv = nullptr;
      const io_service_t service = static_cast<PlugInObject *>(self)->service;
      if (!SameUuid(iid, kIOUSBDeviceInterfaceID)) return E_NOINTERFACE;
      if (const HRESULT result = BehaviourOf(service).queryResult; result != S_OK) return result;
      ++g_deviceInterfaces;
      *ppv = &(new DeviceObject{&g_deviceTable, {1}, service})->table;
      return S_OK;
    },
    AddRef<PlugInObject>,
    [](void *self) { return Release<PlugInObject>(self, g_plugIns); },
    1,
    0,
    nullptr,
    nullptr,
    nullptr,
};

}  // namespace

io_object_t AddEntry(io_object_t parent, const std::string &className, const std::string &name,
                     Properties properties, Behaviour behaviour) {
  std::lock_guard lock(g.mutex);
  Object entry{Object::kEntry};
  entry.className = className, entry.name = name, entry.properties = std::move(properties);
  entry.behaviour = behaviour, entry.parent = parent ? parent : g.root;
  const io_object_t handle = New(std::move(entry));
  g.objects[g.objects[handle].parent].children.push_back(handle);
  for (auto &[iterator, object] : g.objects) {
    if (!object.arrivals || object.port->destroyed || !Matches(object.matching, g.objects[handle]))
      continue;
    object.pending.push_back(handle);
    if (!std::exchange(object.armed, false)) continue;
    g.mainLoop.emplace_back(object.port, [callback = object.matched, refcon = object.refcon,
                                          iterator = iterator] { callback(refcon, iterator); });
  }
  return handle;
}

void Terminate(io_object_t entry) {
  std::lock_guard lock(g.mutex);
  std::vector<io_object_t> gone;
  Subtree(entry, &gone);
  std::erase(g.objects[g.objects[entry].parent].children, entry);
  for (io_object_t handle : gone) g.objects[handle].inTree = false;
  for (auto &[handle, object] : g.objects) {
    if (object.kind != Object::kNotification || object.references == 0 ||
        std::find(gone.begin(), gone.end(), object.service) == gone.end())
      continue;
    g.mainLoop.emplace_back(object.port, [notification = handle] {
      std::unique_lock lock(g.mutex);
      const Object delivered = g.objects[notification];
      lock.unlock();
      // Nothing is delivered once the notification is released.
      if (delivered.references > 0)
        delivered.interest(delivered.refcon, delivered.service, kIOMessageServiceIsTerminated,
                           nullptr);
    });
  }
}

int RunMainLoop() {
  for (int delivered = 0;; ++delivered) {
    std::unique_lock lock(g.mutex);
    auto ready = std::find_if(g.mainLoop.begin(), g.mainLoop.end(), [](auto &item) {
      return item.first->onMainLoop && !item.first->destroyed;
    });
    if (ready == g.mainLoop.end()) return delivered;
    const std::function<void()> work = std::move(ready->second);
    g.mainLoop.erase(ready);
    lock.unlock();
    work();
  }
}

void OnIteratorNext(std::function<void()> hook) {
  std::lock_guard lock(g.mutex);
  g.iteratorHook = std::move(hook);
}

Held Outstanding() {
  std::lock_guard lock(g.mutex);
  Held held{0, g_plugIns - g_baseline.plugIns, g_deviceInterfaces - g_baseline.deviceInterfaces,
            g_cfObjects - g_baseline.cfObjects, g.livePorts};
  for (const auto &[handle, object] : g.objects) held.objectReferences += object.references;
  return held;
}

std::vector<std::string> Misuse() {
  std::lock_guard lock(g.mutex);
  return g.misuse;
}

void Reset() {
  std::lock_guard lock(g.mutex);
  for (auto &[handle, object] : g.objects) {
    if (object.arrivals && !object.port->destroyed) CFRelease(object.matching);
  }
  g.objects.clear(), g.ports.clear(), g.mainLoop.clear(), g.misuse.clear();
  g.iteratorHook = nullptr;
  g.livePorts = 0;
  Object root{Object::kEntry};
  root.className = "IORegistryEntry", root.name = "Root";
  g.root = New(std::move(root));
  g_baseline = {0, g_plugIns, g_deviceInterfaces, g_cfObjects, 0};
}

}  // namespace fake_iokit

using namespace fake_iokit;

// CoreFoundation

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFRunLoopMode kCFRunLoopDefaultMode = CFSTR("kCFRunLoopDefaultMode");

CFStringRef __CFStringMakeConstantString(const char *cStr) {
  static std::mutex mutex;
  static std::map<std::string, std::unique_ptr<__CFString>> interned;
  std::lock_guard lock(mutex);
  auto &string = interned[cStr];
  if (!string) string = std::make_unique<__CFString>(cStr, true);
  return string.get();
}

CFTypeRef CFRetain(CFTypeRef cf) {
  ++const_cast<CfObject *>(static_cast<const CfObject *>(cf))->references;
  return cf;
}

void CFRelease(CFTypeRef cf) {
  auto *object = const_cast<CfObject *>(static_cast<const CfObject *>(cf));
  if (!object->constant && --object->references == 0) delete object;
}

CFTypeID CFGetTypeID(CFTypeRef cf) {
  return static_cast<const CfObject *>(cf)->type;
}

CFStringRef CFCopyDescription(CFTypeRef) {
  return new __CFString("<object>", false);
}

CFTypeID CFStringGetTypeID(void) {
  return kStringType;
}

CFIndex CFStringGetLength(CFStringRef theString) {
  return static_cast<CFIndex>(theString->text.size());
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
  return encoding == kCFStringEncodingUTF8 ? length * 3 : length;
}

Boolean CFStringGetCString(CFStringRef theString, char *buffer, CFIndex bufferSize,
                           CFStringEncoding) {
  const std::string &text = theString->text;
  if (static_cast<CFIndex>(text.size()) >= bufferSize) return false;
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  return true;
}

CFTypeID CFNumberGetTypeID(void) {
  return kNumberType;
}

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType theType, const void *valuePtr) {
  return new __CFNumber(theType == kCFNumberSInt32Type ? *static_cast<const int32_t *>(valuePtr)
                                                       : *static_cast<const int64_t *>(valuePtr));
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void *valuePtr) {
  if (theType == kCFNumberSInt32Type)
    *static_cast<int32_t *>(valuePtr) = static_cast<int32_t>(number->value);
  else
    *static_cast<int64_t *>(valuePtr) = number->value;
  return true;
}

CFIndex CFDictionaryGetCount(CFDictionaryRef theDict) {
  return static_cast<CFIndex>(theDict->pairs.size());
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef theDict, const void **keys, const void **values) {
  for (size_t i = 0; i < theDict->pairs.size(); ++i)
    keys[i] = theDict->pairs[i].first, values[i] = theDict->pairs[i].second;
}

void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void *key, const void *value) {
  CFRetain(key), CFRetain(value);
  theDict->pairs.emplace_back(key, value);
}

CFRunLoopRef CFRunLoopGetMain(void) {
  static __CFRunLoop main;
  return &main;
}

void CFRunLoopAddSource(CFRunLoopRef rl, CFRunLoopSourceRef source, CFRunLoopMode mode) {
  std::lock_guard lock(g.mutex);
  if (rl == CFRunLoopGetMain() && Text(mode) == "kCFRunLoopDefaultMode")
    source->port->onMainLoop = true;
}

CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef, UInt8 byte0, UInt8 byte1, UInt8 byte2,
                                         UInt8 byte3, UInt8 byte4, UInt8 byte5, UInt8 byte6,
                                         UInt8 byte7, UInt8 byte8, UInt8 byte9, UInt8 byte10,
                                         UInt8 byte11, UInt8 byte12, UInt8 byte13, UInt8 byte14,
                                         UInt8 byte15) {
  static std::mutex mutex;
  static std::list<__CFUUID> constants;
  const CFUUIDBytes bytes{byte0, byte1, byte2,  byte3,  byte4,  byte5,  byte6,  byte7,
                          byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15};
  std::lock_guard lock(mutex);
  for (const __CFUUID &uuid : constants) {
    if (SameUuid(bytes, &uuid)) return &uuid;
  }
  return &constants.emplace_back(bytes);
}

CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid) {
  return uuid->bytes;
}

// IOKit

const mach_port_t kIOMainPortDefault = MACH_PORT_NULL;

CFMutableDictionaryRef IOServiceMatching(const char *name) {
  auto *matching = new __CFDictionary;
  CFStringRef className = new __CFString(name, false);
  CFDictionarySetValue(matching, CFSTR("IOProviderClass"), className);
  CFRelease(className);
  return matching;
}

IONotificationPortRef IONotificationPortCreate(mach_port_t) {
  std::lock_guard lock(g.mutex);
  ++g.livePorts;
  return &g.ports.emplace_back();
}

void IONotificationPortDestroy(IONotificationPortRef notify) {
  std::lock_guard lock(g.mutex);
  notify->destroyed = true;
  --g.livePorts;
  // Its arrival registrations end with it; their iterators stay the caller's to release.
  for (auto &[handle, object] : g.objects) {
    if (object.arrivals && object.port == notify) CFRelease(object.matching);
  }
}

CFRunLoopSourceRef IONotificationPortGetRunLoopSource(IONotificationPortRef notify) {
  return &notify->source;
}

kern_return_t IOServiceAddMatchingNotification(IONotificationPortRef notifyPort,
                                               const io_name_t notificationType,
                                               CFDictionaryRef matching,
                                               IOServiceMatchingCallback callback, void *refCon,
                                               io_iterator_t *notification) {
  // The registration consumes the matching dictionary, whatever the outcome.
  if (std::strcmp(notificationType, kIOFirstMatchNotification) != 0) {
    CFRelease(matching);
    return kIOReturnUnsupported;
  }
  std::lock_guard lock(g.mutex);
  Object iterator{Object::kIterator, 1};
  iterator.arrivals = true, iterator.port = notifyPort, iterator.matched = callback;
  iterator.refcon = refCon, iterator.matching = matching;
  std::vector<io_object_t> present;
  Subtree(g.root, &present);
  for (io_object_t handle : present) {
    if (Matches(matching, g.objects[handle])) iterator.pending.push_back(handle);
  }
  *notification = New(std::move(iterator));
  return KERN_SUCCESS;
}

kern_return_t IOServiceAddInterestNotification(IONotificationPortRef notifyPort,
                                               io_service_t service, const io_name_t interestType,
                                               IOServiceInterestCallback callback, void *refCon,
                                               io_object_t *notification) {
  if (std::strcmp(interestType, kIOGeneralInterest) != 0) return kIOReturnUnsupported;
  std::lock_guard lock(g.mutex);
  const Object *entry = Find(service, Object::kEntry, "IOServiceAddInterestNotification");
  if (!entry) return kIOReturnBadArgument;
  if (!entry->inTree) return kIOReturnNoDevice;
  Object registered{Object::kNotification, 1};
  registered.port = notifyPort, registered.service = service, registered.interest = callback;
  registered.refcon = refCon;
  *notification = New(std::move(registered));
  return KERN_SUCCESS;
}

io_object_t IOIteratorNext(io_iterator_t iterator) {
  std::unique_lock lock(g.mutex);
  const Object *arrivals = Find(iterator, Object::kIterator, "IOIteratorNext");
  if (arrivals && arrivals->arrivals && g.iteratorHook) {
    const std::function<void()> hook = g.iteratorHook;
    lock.unlock();
    hook();
    lock.lock();
  }
  Object *it = Find(iterator, Object::kIterator, "IOIteratorNext");
  if (!it) return 0;
  if (it->pending.empty()) {
    it->armed = it->arrivals;
    return 0;
  }
  const io_object_t next = it->pending.front();
  it->pending.pop_front();
  ++g.objects[next].references;
  return next;
}

kern_return_t IOObjectRelease(io_object_t object) {
  std::lock_guard lock(g.mutex);
  auto found = g.objects.find(object);
  if (found == g.objects.end() || found->second.references == 0) {
    g.misuse.push_back("IOObjectRelease of " + std::to_string(object) + ", which is not held");
    return kIOReturnBadArgument;
  }
  --found->second.references;
  return KERN_SUCCESS;
}

kern_return_t IORegistryEntryGetName(io_registry_entry_t entry, io_name_t name) {
  std::lock_guard lock(g.mutex);
  const Object *found = Find(entry, Object::kEntry, "IORegistryEntryGetName");
  if (!found) return kIOReturnBadArgument;
  std::strncpy(name, found->name.c_str(), sizeof(io_name_t) - 1);
  name[sizeof(io_name_t) - 1] = '\0';
  return KERN_SUCCESS;
}

kern_return_t IORegistryEntryCreateCFProperties(io_registry_entry_t entry,
                                                CFMutableDictionaryRef *properties, CFAllocatorRef,
                                                IOOptionBits) {
  std::lock_guard lock(g.mutex);
  const Object *found = Find(entry, Object::kEntry, "IORegistryEntryCreateCFProperties");
  if (!found) return kIOReturnBadArgument;
  if (found->behaviour.propertiesFail) return kIOReturnNoMemory;
  auto *dictionary = new __CFDictionary;
  for (const auto &[key, value] : found->properties) {
    CFStringRef name = new __CFString(key, false);
    CFTypeRef held = std::holds_alternative<int64_t>(value)
                         ? static_cast<CFTypeRef>(new __CFNumber(std::get<int64_t>(value)))
                         : new __CFString(std::get<std::string>(value), false);
    CFDictionarySetValue(dictionary, name, held);
    CFRelease(name), CFRelease(held);
  }
  *properties = dictionary;
  return KERN_SUCCESS;
}

kern_return_t IORegistryEntryGetParentEntry(io_registry_entry_t entry, const io_name_t,
                                            io_registry_entry_t *parent) {
  std::lock_guard lock(g.mutex);
  const Object *found = Find(entry, Object::kEntry, "IORegistryEntryGetParentEntry");
  if (!found) return kIOReturnBadArgument;
  if (!found->parent || !found->inTree) return kIOReturnNoDevice;
  ++g.objects[found->parent].references;
  *parent = found->parent;
  return KERN_SUCCESS;
}

kern_return_t IORegistryEntryGetChildIterator(io_registry_entry_t entry, const io_name_t,
                                              io_iterator_t *iterator) {
  std::lock_guard lock(g.mutex);
  const Object *found = Find(entry, Object::kEntry, "IORegistryEntryGetChildIterator");
  if (!found) return kIOReturnBadArgument;
  Object children{Object::kIterator, 1};
  children.pending.assign(found->children.begin(), found->children.end());
  *iterator = New(std::move(children));
  return KERN_SUCCESS;
}

kern_return_t IOCreatePlugInInterfaceForService(io_service_t service, CFUUIDRef pluginType,
                                                CFUUIDRef interfaceType,
                                                IOCFPlugInInterface ***theInterface,
                                                SInt32 *theScore) {
  std::lock_guard lock(g.mutex);
  const Object *found = Find(service, Object::kEntry, "IOCreatePlugInInterfaceForService");
  if (!found) return kIOReturnBadArgument;
  if (!SameUuid(CFUUIDGetUUIDBytes(pluginType), kIOUSBDeviceUserClientTypeID) ||
      !SameUuid(CFUUIDGetUUIDBytes(interfaceType), kIOCFPlugInInterfaceID))
    return kIOReturnUnsupported;
  if (found->behaviour.plugInResult != KERN_SUCCESS) return found->behaviour.plugInResult;
  ++g_plugIns;
  *theInterface = &(new PlugInObject{&g_plugInTable, {1}, service})->table;
  *theScore = 0;
  return KERN_SUCCESS;
}

kern_return_t IODestroyPlugInInterface(IOCFPlugInInterface **interface) {
  (*interface)->Release(interface);
  return KERN_SUCCESS;
}
