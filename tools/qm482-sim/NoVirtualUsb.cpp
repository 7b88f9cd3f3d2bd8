// Systems without umockdev (macOS) have no virtual USB bus: --usb says so.
#include <cstdio>

#include "UsbRun.h"

void EnterVirtualUsbIfAsked(char **) {}

int RunOnVirtualUsb(sim::Contents, const sim::Options &, const QStringList &, int) {
  std::fprintf(stderr, "qm482-sim: --usb needs umockdev, which this system does not have\n");
  return 2;
}
