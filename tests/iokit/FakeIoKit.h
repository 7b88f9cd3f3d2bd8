// Control of the IOKit test double: an in-memory registry tree that tests build and tear
// down, a main run loop they turn by hand, and counts of everything the code under test
// still holds, so that a leaked reference or a double release fails the test.
#pragma once

#include <IOKit/IOCFPlugIn.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace fake_iokit {

using Property = std::variant<std::string, int64_t>;
using Properties = std::map<std::string, Property>;

// How an entry answers the calls that can fail.
struct Behaviour {
  kern_return_t plugInResult = KERN_SUCCESS;  // IOCreatePlugInInterfaceForService
  HRESULT queryResult = S_OK;                 // QueryInterface for the USB device interface
  IOReturn locationResult = kIOReturnSuccess;
  uint32_t locationID = 0;
  bool propertiesFail = false;  // IORegistryEntryCreateCFProperties
};

// Attaches a new entry under parent (0 for the root) in the IOService plane. An entry that
// a first-match registration matches joins its iterator at once, and the registration's
// callback is queued on the main run loop when the iterator had been drained. Returns the
// entry's handle, which the tree owns: it is no reference of the caller's.
io_object_t AddEntry(io_object_t parent, const std::string &className, const std::string &name,
                     Properties properties = {}, Behaviour behaviour = {});
// The entry and everything below it leave the tree; every interest registration on them
// gets kIOMessageServiceIsTerminated through the main run loop.
void Terminate(io_object_t entry);

// Delivers what waits for the main run loop, on the calling thread. Only ports whose
// source was added to the main run loop deliver. Returns the number of callbacks run.
int RunMainLoop();
// Runs on every IOIteratorNext of a matching iterator, before the next entry is taken.
void OnIteratorNext(std::function<void()> hook);

// What the code under test holds and has not given back.
struct Held {
  int objectReferences = 0;  // entries, iterators and notifications handed out
  int plugIns = 0;
  int deviceInterfaces = 0;
  int cfObjects = 0;  // numbers, strings, dictionaries made on request (not constants)
  int ports = 0;
};
Held Outstanding();
// Calls that broke the rules: releasing what was not held, a callback into a destroyed
// port, an unknown handle. Empty when the code under test behaved.
std::vector<std::string> Misuse();

// Forgets the tree, the registrations and the counts.
void Reset();

}  // namespace fake_iokit
