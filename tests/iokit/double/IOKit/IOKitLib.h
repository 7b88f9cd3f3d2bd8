// Test double: the IOKit calls and constants that device discovery uses, declared as the
// system documents them. Implemented over an in-memory registry in FakeIoKit.cpp.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

extern "C" {

typedef int kern_return_t;
typedef unsigned int mach_port_t;
typedef kern_return_t IOReturn;
typedef UInt32 IOOptionBits;
typedef mach_port_t io_object_t;
typedef io_object_t io_iterator_t, io_registry_entry_t, io_service_t;
typedef char io_name_t[128];
typedef struct IONotificationPort *IONotificationPortRef;

typedef void (*IOServiceMatchingCallback)(void *refcon, io_iterator_t iterator);
typedef void (*IOServiceInterestCallback)(void *refcon, io_service_t service, uint32_t messageType,
                                          void *messageArgument);

#define KERN_SUCCESS 0
#define kNilOptions 0
#define kIOServicePlane "IOService"
#define kIOFirstMatchNotification "IOServiceFirstMatch"
#define kIOGeneralInterest "IOGeneralInterest"

extern const mach_port_t kIOMainPortDefault;

CFMutableDictionaryRef IOServiceMatching(const char *name);

IONotificationPortRef IONotificationPortCreate(mach_port_t mainPort);
void IONotificationPortDestroy(IONotificationPortRef notify);
CFRunLoopSourceRef IONotificationPortGetRunLoopSource(IONotificationPortRef notify);

kern_return_t IOServiceAddMatchingNotification(IONotificationPortRef notifyPort,
                                               const io_name_t notificationType,
                                               CFDictionaryRef matching,
                                               IOServiceMatchingCallback callback, void *refCon,
                                               io_iterator_t *notification);
kern_return_t IOServiceAddInterestNotification(IONotificationPortRef notifyPort,
                                               io_service_t service, const io_name_t interestType,
                                               IOServiceInterestCallback callback, void *refCon,
                                               io_object_t *notification);

io_object_t IOIteratorNext(io_iterator_t iterator);
kern_return_t IOObjectRelease(io_object_t object);

kern_return_t IORegistryEntryGetName(io_registry_entry_t entry, io_name_t name);
kern_return_t IORegistryEntryCreateCFProperties(io_registry_entry_t entry,
                                                CFMutableDictionaryRef *properties,
                                                CFAllocatorRef allocator, IOOptionBits options);
kern_return_t IORegistryEntryGetParentEntry(io_registry_entry_t entry, const io_name_t plane,
                                            io_registry_entry_t *parent);
kern_return_t IORegistryEntryGetChildIterator(io_registry_entry_t entry, const io_name_t plane,
                                              io_iterator_t *iterator);
}
