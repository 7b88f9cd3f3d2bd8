// The IOKit double's controls: an in-memory registry tree, a main run loop turned by hand,
// and what the code under test still holds, so that a leaked reference fails the test.
#pragma once

#include <IOKit/IOKitLib.h>

#include <map>
#include <string>
#include <variant>

namespace fake_iokit {

using Properties = std::map<std::string, std::variant<std::string, int64_t>>;

// Attaches an entry, named after its class, under parent (0 for none) and hands it to every
// arrival registration it matches. The handle is the tree's, no reference of the caller's.
io_object_t AddEntry(io_object_t parent, const std::string &className, Properties properties = {});
// Delivers the arrival callbacks of ports whose source is on the main run loop.
void RunMainLoop();
// References still held and releases of what was not held: "" when the code behaved.
std::string Leaks();

}  // namespace fake_iokit
