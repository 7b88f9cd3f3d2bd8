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

namespace fake_iokit::detail {

enum : CFTypeID { kStringType = 7, kDictionaryType = 18, kNumberType = 22, kOtherType = 1 };

std::atomic<int> g_cfObjects{0};

// Every CoreFoundation object of the double. Constants are never counted nor freed.
struct CfObject {
  CfObject(CFTypeID type, bool constant) : type(type), constant(constant) {
    if (!constant) ++g_cfObjects;
  }
  virtual ~CfObject() {
    if (!constant) --g_cfObjects;
  }
  const CFTypeID type;
  const bool constant;
  std::atomic<int> references{1};
};

}  // namespace fake_iokit::detail

using fake_iokit::detail::CfObject;

struct __CFString : CfObject {
  __CFString(std::string text, bool constant)
      : CfObject(fake_iokit::detail::kStringType, constant), text(std::move(text)) {}
  const std::string text;
};
struct __CFNumber : CfObject {
  explicit __CFNumber(int64_t value)
      : CfObject(fake_iokit::detail::kNumberType, false), value(value) {}
  const int64_t value;
};
struct __CFDictionary : CfObject {
  __CFDictionary() : CfObject(fake_iokit::detail::kDictionaryType, false) {}
  ~__CFDictionary() override {
    for (auto &[key, value] : pairs) CFRelease(key), CFRelease(value);
  }
  std::vector<std::pair<CFTypeRef, CFTypeRef>> pairs;
};
struct __CFRunLoop : CfObject {
  __CFRunLoop() : CfObject(fake_iokit::detail::kOtherType, true) {}
};
struct __CFRunLoopSource : CfObject {
  explicit __CFRunLoopSource(IONotificationPort *port)
      : CfObject(fake_iokit::detail::kOtherType, true), port(port) {}
  IONotificationPort *const port;
};
struct __CFUUID : CfObject {
  explicit __CFUUID(CFUUIDBytes bytes)
      : CfObject(fake_iokit::detail::kOtherType, true), bytes(bytes) {}
  const CFUUIDBytes bytes;
};

struct IONotificationPort {
  __CFRunLoopSource source{this};
  bool onMainLoop = false;
  bool destroyed = false;
};

namespace fake_iokit {
namespace {

const CfObject *Cf(CFTypeRef ref) {
  return static_cast<const CfObject *>(ref);
}
std::string Text(CFTypeRef ref) {
  return ref && Cf(ref)->type == detail::kStringType ? static_cast<CFStringRef>(ref)->text
                                                     : std::string();
}

struct Entry {
  std::string className, name;
  Properties properties;
  Behaviour behaviour;
  io_object_t parent = 0;
  std::vector<io_object_t> children;
  bool inTree = true;
};

struct MatchRegistration {
  IONotificationPort *port;
  CFDictionaryRef matching;
  IOServiceMatchingCallback callback;
  void *refcon;
  io_iterator_t iterator;
};

struct Iterator {
  std::deque<io_object_t> entries;
  MatchRegistration *registration = nullptr;  // for an arrival iterator
  bool armed = false;  // drained since the last callback: the next arrival calls back
};

struct Notification {
  IONotificationPort *port;
  io_service_t service;
  IOServiceInterestCallback callback;
  void *refcon;
};

// One object of the registry as the code under test sees it: a handle with the number of
// references handed out on it.
struct Object {
  int references = 0;
  std::unique_ptr<Entry> entry;
  std::unique_ptr<Iterator> iterator;
  std::unique_ptr<Notification> notification;
};

struct Registry {
  std::mutex mutex;
  std::map<io_object_t, Object> objects;
  io_object_t nextHandle = 0x1003;
  io_object_t root = 0;
  std::list<MatchRegistration> registrations;
  std::list<std::unique_ptr<IONotificationPort>>
      ports;  // kept until Reset: queued work checks them
  std::deque<std::pair<IONotificationPort *, std::function<void()>>> mainLoop;
  std::function<void()> iteratorHook;
  std::vector<std::string> misuse;
  int livePorts = 0;
};

Registry &State() {
  static Registry registry;
  return registry;
}

std::atomic<int> g_plugIns{0}, g_deviceInterfaces{0};
Held g_baseline;

void Misused(Registry &registry, std::string what) {
  registry.misuse.push_back(std::move(what));
}

io_object_t NewObject(Registry &registry, Object object) {
  const io_object_t handle = registry.nextHandle++;
  registry.objects[handle] = std::move(object);
  return handle;
}

Entry *EntryOf(Registry &registry, io_object_t handle, const char *call) {
  auto found = registry.objects.find(handle);
  if (found == registry.objects.end() || !found->second.entry) {
    Misused(registry, std::string(call) + " on " + std::to_string(handle) + ", not an entry");
    return nullptr;
  }
  return found->second.entry.get();
}

io_object_t HandOut(Registry &registry, io_object_t handle) {
  ++registry.objects[handle].references;
  return handle;
}

bool Matches(CFDictionaryRef matching, const Entry &entry) {
  for (const auto &[key, value] : matching->pairs) {
    const std::string name = Text(key);
    if (name == "IOProviderClass") {
      if (Text(value) != entry.className) return false;
      continue;
    }
    auto property = entry.properties.find(name);
    if (property == entry.properties.end()) return false;
    if (Cf(value)->type == detail::kNumberType) {
      const auto *number = std::get_if<int64_t>(&property->second);
      if (!number || *number != static_cast<CFNumberRef>(value)->value) return false;
    } else if (property->second != Property(Text(value))) {
      return false;
    }
  }
  return true;
}

void CollectSubtree(Registry &registry, io_object_t handle, std::vector<io_object_t> *out) {
  out->push_back(handle);
  for (io_object_t child : registry.objects[handle].entry->children)
    CollectSubtree(registry, child, out);
}

bool SameUuid(CFUUIDBytes a, CFUUIDRef b) {
  return std::memcmp(&a, &b->bytes, sizeof a) == 0;
}

// A plug-in or device interface: the interface table pointer comes first, so the pointer
// that callers hold (a pointer to that member) is also a pointer to the whole object.
template <typename Table>
struct ComObject {
  Table *table;
  std::atomic<ULONG> references{1};
  io_service_t service;
};
using PlugInObject = ComObject<IOCFPlugInInterface>;
using DeviceObject = ComObject<IOUSBDeviceInterface>;

Behaviour BehaviourOf(io_service_t service) {
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
  auto found = registry.objects.find(service);
  return found != registry.objects.end() && found->second.entry ? found->second.entry->behaviour
                                                                : Behaviour{};
}

template <typename Object>
ULONG AddRef(void *self) {
  return ++static_cast<Object *>(self)->references;
}

template <typename Object>
ULONG Release(void *self, std::atomic<int> &live) {
  auto *object = static_cast<Object *>(self);
  const ULONG left = --object->references;
  if (left == 0) {
    delete object;
    --live;
  }
  return left;
}

IOReturn GetLocationID(void *self, UInt32 *locationID) {
  const Behaviour behaviour = BehaviourOf(static_cast<DeviceObject *>(self)->service);
  if (behaviour.locationResult != kIOReturnSuccess) return behaviour.locationResult;
  *locationID = behaviour.locationID;
  return kIOReturnSuccess;
}

IOUSBDeviceInterface g_deviceTable = {
    nullptr,
    [](void *, REFIID, LPVOID *ppv) -> HRESULT {
      *ppv = nullptr;
      return E_NOINTERFACE;
    },
    AddRef<DeviceObject>,
    [](void *self) { return Release<DeviceObject>(self, g_deviceInterfaces); },
    GetLocationID,
};

HRESULT QueryPlugIn(void *self, REFIID iid, LPVOID *ppv) {
  *ppv = nullptr;
  const io_service_t service = static_cast<PlugInObject *>(self)->service;
  if (!SameUuid(iid, kIOUSBDeviceInterfaceID)) return E_NOINTERFACE;
  const HRESULT result = BehaviourOf(service).queryResult;
  if (result != S_OK) return result;
  ++g_deviceInterfaces;
  *ppv = &(new DeviceObject{&g_deviceTable, {1}, service})->table;
  return S_OK;
}

IOCFPlugInInterface g_plugInTable = {
    nullptr,
    QueryPlugIn,
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
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
  if (parent == 0) parent = registry.root;
  Object object;
  object.entry = std::make_unique<Entry>(
      Entry{className, name, std::move(properties), behaviour, parent, {}, true});
  const io_object_t handle = NewObject(registry, std::move(object));
  if (parent) registry.objects[parent].entry->children.push_back(handle);
  for (MatchRegistration &match : registry.registrations) {
    if (match.port->destroyed || !Matches(match.matching, *registry.objects[handle].entry))
      continue;
    Iterator &iterator = *registry.objects[match.iterator].iterator;
    iterator.entries.push_back(handle);
    if (!iterator.armed) continue;
    iterator.armed = false;
    registry.mainLoop.emplace_back(match.port,
                                   [match] { match.callback(match.refcon, match.iterator); });
  }
  return handle;
}

void Terminate(io_object_t entry) {
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
  std::vector<io_object_t> gone;
  CollectSubtree(registry, entry, &gone);
  auto &siblings = registry.objects[registry.objects[entry].entry->parent].entry->children;
  siblings.erase(std::remove(siblings.begin(), siblings.end(), entry), siblings.end());
  for (io_object_t handle : gone) registry.objects[handle].entry->inTree = false;
  for (auto &[handle, object] : registry.objects) {
    if (!object.notification || object.references == 0 ||
        std::find(gone.begin(), gone.end(), object.notification->service) == gone.end())
      continue;
    const io_object_t notification = handle;
    registry.mainLoop.emplace_back(object.notification->port, [notification] {
      Registry &registry = State();
      Notification delivered;
      {
        std::lock_guard lock(registry.mutex);
        Object &object = registry.objects[notification];
        if (object.references == 0) return;  // released before the loop came round
        delivered = *object.notification;
      }
      delivered.callback(delivered.refcon, delivered.service, kIOMessageServiceIsTerminated,
                         nullptr);
    });
  }
}

int RunMainLoop() {
  Registry &registry = State();
  int delivered = 0;
  for (;;) {
    std::function<void()> work;
    {
      std::lock_guard lock(registry.mutex);
      auto ready = std::find_if(registry.mainLoop.begin(), registry.mainLoop.end(), [](auto &item) {
        return item.first->onMainLoop && !item.first->destroyed;
      });
      if (ready == registry.mainLoop.end()) return delivered;
      work = std::move(ready->second);
      registry.mainLoop.erase(ready);
    }
    work();
    ++delivered;
  }
}

void OnIteratorNext(std::function<void()> hook) {
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
  registry.iteratorHook = std::move(hook);
}

Held Outstanding() {
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
  Held held;
  for (const auto &[handle, object] : registry.objects) held.objectReferences += object.references;
  held.plugIns = g_plugIns - g_baseline.plugIns;
  held.deviceInterfaces = g_deviceInterfaces - g_baseline.deviceInterfaces;
  held.cfObjects = detail::g_cfObjects - g_baseline.cfObjects;
  held.ports = registry.livePorts;
  return held;
}

std::vector<std::string> Misuse() {
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
  return registry.misuse;
}

void Reset() {
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
  for (MatchRegistration &match : registry.registrations) CFRelease(match.matching);
  registry.registrations.clear();
  registry.objects.clear();
  registry.ports.clear();
  registry.mainLoop.clear();
  registry.iteratorHook = nullptr;
  registry.misuse.clear();
  registry.livePorts = 0;
  Object root;
  root.entry = std::make_unique<Entry>(Entry{"IORegistryEntry", "Root", {}, {}, 0, {}, true});
  registry.root = NewObject(registry, std::move(root));
  g_baseline = {0, g_plugIns, g_deviceInterfaces, detail::g_cfObjects, 0};
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
  ++const_cast<CfObject *>(Cf(cf))->references;
  return cf;
}

void CFRelease(CFTypeRef cf) {
  auto *object = const_cast<CfObject *>(Cf(cf));
  if (object->constant) return;
  if (--object->references == 0) delete object;
}

CFTypeID CFGetTypeID(CFTypeRef cf) {
  return Cf(cf)->type;
}

CFStringRef CFCopyDescription(CFTypeRef cf) {
  std::string text;
  switch (Cf(cf)->type) {
    case detail::kStringType:
      text = Text(cf);
      break;
    case detail::kNumberType:
      text = std::to_string(static_cast<CFNumberRef>(cf)->value);
      break;
    case detail::kDictionaryType:
      text = "{" + std::to_string(static_cast<CFDictionaryRef>(cf)->pairs.size()) + " pairs}";
      break;
    default:
      text = "<object>";
  }
  return new __CFString(text, false);
}

CFTypeID CFStringGetTypeID(void) {
  return detail::kStringType;
}

CFIndex CFStringGetLength(CFStringRef theString) {
  return static_cast<CFIndex>(theString->text.size());
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
  return encoding == kCFStringEncodingUTF8 ? length * 3 : length;
}

Boolean CFStringGetCString(CFStringRef theString, char *buffer, CFIndex bufferSize,
                           CFStringEncoding encoding) {
  const std::string &text = theString->text;
  if (static_cast<CFIndex>(text.size()) + 1 > bufferSize) return false;
  if (encoding == kCFStringEncodingASCII &&
      std::any_of(text.begin(), text.end(), [](char c) { return (c & 0x80) != 0; }))
    return false;
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  return true;
}

CFTypeID CFNumberGetTypeID(void) {
  return detail::kNumberType;
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
  for (size_t i = 0; i < theDict->pairs.size(); ++i) {
    if (keys) keys[i] = theDict->pairs[i].first;
    if (values) values[i] = theDict->pairs[i].second;
  }
}

void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void *key, const void *value) {
  CFRetain(key), CFRetain(value);
  for (auto &pair : theDict->pairs) {
    if (Text(pair.first) == Text(key)) {
      CFRelease(pair.first), CFRelease(pair.second);
      pair = {key, value};
      return;
    }
  }
  theDict->pairs.emplace_back(key, value);
}

CFRunLoopRef CFRunLoopGetMain(void) {
  static __CFRunLoop main;
  return &main;
}

void CFRunLoopAddSource(CFRunLoopRef rl, CFRunLoopSourceRef source, CFRunLoopMode mode) {
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
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
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
  ++registry.livePorts;
  return registry.ports.emplace_back(std::make_unique<IONotificationPort>()).get();
}

void IONotificationPortDestroy(IONotificationPortRef notify) {
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
  if (notify->destroyed) return Misused(registry, "port destroyed twice");
  notify->destroyed = true;
  --registry.livePorts;
  // Its registrations end with it; their iterators stay the caller's to release.
  registry.registrations.remove_if([&](MatchRegistration &match) {
    if (match.port != notify) return false;
    if (auto iterator = registry.objects.find(match.iterator); iterator != registry.objects.end())
      iterator->second.iterator->registration = nullptr;
    CFRelease(match.matching);
    return true;
  });
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
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
  Object object;
  object.references = 1;
  object.iterator = std::make_unique<Iterator>();
  std::vector<io_object_t> present;
  CollectSubtree(registry, registry.root, &present);
  for (io_object_t handle : present) {
    if (Matches(matching, *registry.objects[handle].entry))
      object.iterator->entries.push_back(handle);
  }
  Iterator *iterator = object.iterator.get();
  *notification = NewObject(registry, std::move(object));
  iterator->registration = &registry.registrations.emplace_back(
      MatchRegistration{notifyPort, matching, callback, refCon, *notification});
  return KERN_SUCCESS;
}

kern_return_t IOServiceAddInterestNotification(IONotificationPortRef notifyPort,
                                               io_service_t service, const io_name_t interestType,
                                               IOServiceInterestCallback callback, void *refCon,
                                               io_object_t *notification) {
  if (std::strcmp(interestType, kIOGeneralInterest) != 0) return kIOReturnUnsupported;
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
  const Entry *entry = EntryOf(registry, service, "IOServiceAddInterestNotification");
  if (!entry) return kIOReturnBadArgument;
  if (!entry->inTree) return kIOReturnNoDevice;
  Object object;
  object.references = 1;
  object.notification =
      std::make_unique<Notification>(Notification{notifyPort, service, callback, refCon});
  *notification = NewObject(registry, std::move(object));
  return KERN_SUCCESS;
}

io_object_t IOIteratorNext(io_iterator_t iterator) {
  Registry &registry = State();
  std::function<void()> hook;
  {
    std::lock_guard lock(registry.mutex);
    auto found = registry.objects.find(iterator);
    if (found != registry.objects.end() && found->second.iterator &&
        found->second.iterator->registration)
      hook = registry.iteratorHook;
  }
  if (hook) hook();
  std::lock_guard lock(registry.mutex);
  auto found = registry.objects.find(iterator);
  if (found == registry.objects.end() || !found->second.iterator || found->second.references == 0) {
    Misused(registry, "IOIteratorNext on " + std::to_string(iterator) + ", not a held iterator");
    return 0;
  }
  Iterator &entries = *found->second.iterator;
  if (entries.entries.empty()) {
    entries.armed = true;
    return 0;
  }
  const io_object_t next = entries.entries.front();
  entries.entries.pop_front();
  return HandOut(registry, next);
}

kern_return_t IOObjectRelease(io_object_t object) {
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
  auto found = registry.objects.find(object);
  if (found == registry.objects.end() || found->second.references == 0) {
    Misused(registry, "IOObjectRelease of " + std::to_string(object) + ", which is not held");
    return kIOReturnBadArgument;
  }
  --found->second.references;
  return KERN_SUCCESS;
}

kern_return_t IORegistryEntryGetName(io_registry_entry_t entry, io_name_t name) {
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
  const Entry *found = EntryOf(registry, entry, "IORegistryEntryGetName");
  if (!found) return kIOReturnBadArgument;
  std::strncpy(name, found->name.c_str(), sizeof(io_name_t) - 1);
  name[sizeof(io_name_t) - 1] = '\0';
  return KERN_SUCCESS;
}

kern_return_t IORegistryEntryCreateCFProperties(io_registry_entry_t entry,
                                                CFMutableDictionaryRef *properties, CFAllocatorRef,
                                                IOOptionBits) {
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
  const Entry *found = EntryOf(registry, entry, "IORegistryEntryCreateCFProperties");
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

kern_return_t IORegistryEntryGetParentEntry(io_registry_entry_t entry, const io_name_t plane,
                                            io_registry_entry_t *parent) {
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
  const Entry *found = EntryOf(registry, entry, "IORegistryEntryGetParentEntry");
  if (!found) return kIOReturnBadArgument;
  if (std::strcmp(plane, kIOServicePlane) != 0) {
    Misused(registry, std::string("parent in the plane ") + plane);
    return kIOReturnBadArgument;
  }
  if (!found->parent || !found->inTree) return kIOReturnNoDevice;
  *parent = HandOut(registry, found->parent);
  return KERN_SUCCESS;
}

kern_return_t IORegistryEntryGetChildIterator(io_registry_entry_t entry, const io_name_t plane,
                                              io_iterator_t *iterator) {
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
  const Entry *found = EntryOf(registry, entry, "IORegistryEntryGetChildIterator");
  if (!found) return kIOReturnBadArgument;
  if (std::strcmp(plane, kIOServicePlane) != 0) {
    Misused(registry, std::string("children in the plane ") + plane);
    return kIOReturnBadArgument;
  }
  Object object;
  object.references = 1;
  object.iterator = std::make_unique<Iterator>();
  object.iterator->entries.assign(found->children.begin(), found->children.end());
  *iterator = NewObject(registry, std::move(object));
  return KERN_SUCCESS;
}

kern_return_t IOCreatePlugInInterfaceForService(io_service_t service, CFUUIDRef pluginType,
                                                CFUUIDRef interfaceType,
                                                IOCFPlugInInterface ***theInterface,
                                                SInt32 *theScore) {
  Registry &registry = State();
  std::lock_guard lock(registry.mutex);
  const Entry *found = EntryOf(registry, service, "IOCreatePlugInInterfaceForService");
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
