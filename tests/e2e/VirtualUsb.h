#pragma once

#include <QString>
#include <memory>

#include "SimulatedDevice.h"

typedef struct _UMockdevTestbed UMockdevTestbed;
typedef struct _UMockdevIoctlBase UMockdevIoctlBase;

// A USB bus made of fake sysfs entries, udev events and pty-backed tty nodes. The process
// must run under umockdev's preload (umockdev-wrapper); child processes share the bus.
class VirtualUsb {
 public:
  VirtualUsb();
  ~VirtualUsb();

  struct Device {
    QString syspath;  // of the USB device
    QString devnode;  // its serial node, or empty
    int master = -1;  // the test's end of the serial node; owned by the bus
  };
  // Adds a device below the root hub, with an interface and (unless withTty is false) a
  // tty node below that. Nothing is announced: a device added before the program starts
  // is simply there. usbAttributes: whether it has the bus number and path attributes.
  Device add(const QString &name, uint32_t vendor, uint32_t product, bool withTty = true,
             bool usbAttributes = true);
  void announce(const Device &device, const char *action);  // "add" or "remove"
  // add() and announce("add").
  Device plugIn(const QString &name, uint32_t vendor = 0x1209, uint32_t product = 0x4D52);
  void unplug(const Device &device) { announce(device, "remove"); }

 private:
  UMockdevTestbed *bed_;
  UMockdevIoctlBase *ioctls_;
  QString hub_;
  int ttys_ = 0;
};

// The simulator behind a device's serial node, for the life of the object.
std::unique_ptr<SimulatedDevice> SimulatorBehind(const VirtualUsb::Device &device,
                                                 sim::Contents contents, sim::Options options = {});
