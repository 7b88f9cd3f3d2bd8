// Test double: the USB device interface, reduced to the members device discovery calls
// (code reaches members by name, so the system's members in between do not show).
#pragma once

#include <IOKit/IOCFPlugIn.h>

#define kIOUSBDeviceUserClientTypeID                                                               \
  CFUUIDGetConstantUUIDWithBytes(NULL, 0x9D, 0xC7, 0xB7, 0x80, 0x9E, 0xC0, 0x11, 0xD4, 0xA5, 0x4F, \
                                 0x00, 0x0A, 0x27, 0x05, 0x28, 0x61)
#define kIOUSBDeviceInterfaceID                                                                    \
  CFUUIDGetConstantUUIDWithBytes(NULL, 0x5C, 0x81, 0x87, 0xD0, 0x9E, 0xF3, 0x11, 0xD4, 0x8B, 0x45, \
                                 0x00, 0x0A, 0x27, 0x05, 0x28, 0x61)

typedef struct IOUSBDeviceStruct {
  IUNKNOWN_C_GUTS;
  IOReturn (*GetLocationID)(void *self, UInt32 *locationID);
} IOUSBDeviceInterface;
