// Test double: the plug-in interface through which a service's user-space interfaces are
// reached, with the COM conventions it follows. Members no caller uses are left out.
#pragma once

#include <IOKit/IOKitLib.h>

extern "C" {

typedef SInt32 HRESULT;
typedef UInt32 ULONG;
typedef void *LPVOID;
typedef CFUUIDBytes REFIID;

#define IUNKNOWN_C_GUTS                                                  \
  void *_reserved;                                                       \
  HRESULT (*QueryInterface)(void *thisPointer, REFIID iid, LPVOID *ppv); \
  ULONG (*AddRef)(void *thisPointer);                                    \
  ULONG (*Release)(void *thisPointer)

#define kIOCFPlugInInterfaceID                                                                     \
  CFUUIDGetConstantUUIDWithBytes(NULL, 0xC2, 0x44, 0xE8, 0x58, 0x10, 0x9C, 0x11, 0xD4, 0x91, 0xD4, \
                                 0x00, 0x50, 0xE4, 0xC6, 0x42, 0x6F)

typedef struct IOCFPlugInInterfaceStruct {
  IUNKNOWN_C_GUTS;
} IOCFPlugInInterface;

kern_return_t IOCreatePlugInInterfaceForService(io_service_t service, CFUUIDRef pluginType,
                                                CFUUIDRef interfaceType,
                                                IOCFPlugInInterface ***theInterface,
                                                SInt32 *theScore);
kern_return_t IODestroyPlugInInterface(IOCFPlugInInterface **interface);
}
