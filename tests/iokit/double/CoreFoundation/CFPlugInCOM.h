// Test double: the COM conventions of plug-in interfaces.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

typedef SInt32 HRESULT;
typedef UInt32 ULONG;
typedef void *LPVOID;
typedef CFUUIDBytes REFIID;

#define S_OK ((HRESULT)0x00000000L)
#define E_NOINTERFACE ((HRESULT)0x80000004L)

#define IUNKNOWN_C_GUTS                                                  \
  void *_reserved;                                                       \
  HRESULT (*QueryInterface)(void *thisPointer, REFIID iid, LPVOID *ppv); \
  ULONG (*AddRef)(void *thisPointer);                                    \
  ULONG (*Release)(void *thisPointer)
