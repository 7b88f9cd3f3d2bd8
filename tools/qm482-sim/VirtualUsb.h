#pragma once

#include <QString>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

typedef struct _UMockdevTestbed UMockdevTestbed;
typedef struct _UMockdevIoctlBase UMockdevIoctlBase;

// A USB bus made of fake sysfs entries, udev events and pty-backed tty nodes, as on a PC: a
// host controller, its root hub, and devices on the hub's ports. Programs see it when they
// run under umockdev's preload (umockdev-wrapper) with this process's UMOCKDEV_DIR; child
// processes inherit both.
class VirtualUsb {
 public:
  VirtualUsb();
  ~VirtualUsb();
  VirtualUsb(const VirtualUsb &) = delete;
  VirtualUsb &operator=(const VirtualUsb &) = delete;

  // Whether this process itself sees the virtual bus.
  static bool inMockEnvironment();
  // The bus is seen only by processes under umockdev's preload: unless this one is, runs
  // the program again (argv) under umockdev-wrapper. Returns only when already under it;
  // otherwise ends the process, saying why (program names it) if the wrapper is missing.
  static void runUnderPreload(char **argv, const char *program);

  struct Device {
    QString syspath;  // of the USB device
    QString devnode;  // its serial node, or empty
    int master = -1;  // the device's end of the serial node, owned by the bus; -1 on failure
  };
  // Adds a device with an interface and (unless withTty is false) a tty node below that.
  // Adding it announces it ("add"), as the kernel does, before its interface and tty
  // exist. busAttributes: whether it has its bus number and port path.
  Device add(const QString &name, uint32_t vendor, uint32_t product, bool withTty = true,
             bool busAttributes = true);
  void announce(const Device &device, const char *action);  // "add" or "remove"
  // A QM482: add() and announce("add") once its tty is there too.
  Device plugIn(const QString &name);
  void unplug(const Device &device) { announce(device, "remove"); }
  // Why the last add() failed.
  QString error() const { return error_; }

  // Requests of a Mac's serial driver (an arbitrary speed, the receive latency) that a pty
  // does not know: the serial nodes answer each request named here with its error (0 for
  // success) and record the value it carried.
  struct DriverRequest {
    unsigned long request;
    uint64_t value;
  };
  void answerDriverRequest(unsigned long request, int error = 0);
  std::vector<DriverRequest> driverRequests() const;
  struct DriverRequests;

 private:
  UMockdevTestbed *bed_;
  UMockdevIoctlBase *ioctls_;
  std::unique_ptr<DriverRequests> driverRequests_;
  QString hub_;
  int ttys_ = 0;
  QString error_;
};
