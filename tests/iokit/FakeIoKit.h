// Control of the IOKit test double: an in-memory registry tree that tests build, a main
// run loop they turn by hand, and a count of everything the code under test still holds,
// so that a leaked reference or a double release fails the test.
#pragma once

#include <IOKit/IOKitLib.h>

#include <cstdint>
#include <map>
#include <string>
#include <variant>

namespace fake_iokit {

using Properties = std::map<std::string, std::variant<std::string, int64_t>>;

// Attaches a new entry under parent (0 for the root). A first-match registration that
// matches it takes it at once, and calls back through the main run loop when its iterator
// had been drained. The handle is the tree's, no reference of the caller's.
io_object_t AddEntry(io_object_t parent, const std::string &className, const std::string &name,
                     Properties properties = {});
// Delivers, on the calling thread, what waits for a port whose source is on the main loop.
void RunMainLoop();

// Registry references the code under test holds and releases of what it did not hold: ""
// when it behaved. (Memory it leaks or frees twice is the sanitizer build's to find.)
std::string Leaks();

// Forgets the tree, the registrations and the counts.
void Reset();

}  // namespace fake_iokit
