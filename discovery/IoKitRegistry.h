#pragma once

#include <IOKit/IOKitLib.h>

#include <map>
#include <memory>
#include <mutex>

#include "DeviceRegistry.h"

// The registry on macOS: IOKit's I/O Registry in the IOService plane. Arrivals and removals
// come through one notification port whose source sits in the main run loop, so IOKit
// calls back on the main thread; the walks call in from their own threads.
class IoKitRegistry : public DeviceRegistry {
 public:
  IoKitRegistry() = default;
  ~IoKitRegistry() override;

  bool createMatching(uint32_t vendorId, uint32_t productId) override;
  void addFirstMatchNotification(MatchCallback callback) override;
  RegistryEntry nextMatch() override;

  bool getName(RegistryEntry entry, QString *name) override;
  RegistryResult createPlugInInterface(RegistryEntry service,
                                       std::unique_ptr<PlugInInterface> *plugIn) override;
  RegistryResult addInterestNotification(RegistryEntry service, InterestCallback callback,
                                         RegistryEntry *notification) override;

  RegistryResult createProperties(RegistryEntry entry, RegistryProperties *properties) override;
  RegistryEntry parent(RegistryEntry entry) override;
  RegistryResult children(RegistryEntry entry, std::vector<RegistryEntry> *children) override;
  bool isUsbDevice(RegistryEntry entry) override;
  void release(RegistryEntry entry) override;

 private:
  static void FirstMatch(void *refcon, io_iterator_t iterator);
  static void Interest(void *refcon, io_service_t service, uint32_t messageType, void *argument);

  struct InterestRegistration {
    InterestCallback callback;
  };

  CFMutableDictionaryRef matching_ = nullptr;
  // Made once and kept for the life of the program.
  IONotificationPortRef notifyPort_ = nullptr;
  CFRunLoopRef runLoop_ = nullptr;
  io_iterator_t addedIterator_ = 0;
  MatchCallback matched_;

  std::mutex mutex_;  // guards interests_: registered on walk threads, ended on the main thread
  std::map<io_object_t, std::unique_ptr<InterestRegistration>> interests_;
};
