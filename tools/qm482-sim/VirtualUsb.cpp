// GLib's headers use "signals" as a name, which Qt's headers make a keyword: GLib first.
#include <umockdev.h>

#include "VirtualUsb.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <vector>

struct VirtualUsb::DriverRequests {
  mutable std::mutex mutex;
  std::map<unsigned long, int> errors;  // by request
  std::vector<DriverRequest> seen;

  // Answers the request when it is one of those listed; runs on umockdev's ioctl thread.
  bool answer(UMockdevIoctlClient *client, unsigned long request) {
    std::lock_guard lock(mutex);
    const auto answered = errors.find(request);
    if (answered == errors.end()) return false;
    DriverRequest taken{request, 0};
    const gsize size = std::min<gsize>(_IOC_SIZE(request), sizeof taken.value);
    if (UMockdevIoctlData *value =
            umockdev_ioctl_data_resolve(umockdev_ioctl_client_get_arg(client), 0, size, nullptr)) {
      std::memcpy(&taken.value, value->data, size);
      g_object_unref(value);
    }
    seen.push_back(taken);
    umockdev_ioctl_client_complete(client, answered->second ? -1 : 0, answered->second);
    return true;
  }
};

namespace {

constexpr uint32_t kVendorId = 0x1209;
constexpr uint32_t kProductId = 0x4D52;

// The emulated tty passes the terminal ioctls through; exclusive use it refuses, so answer
// that here as a real tty would.
gboolean HandleIoctl(UMockdevIoctlBase *, UMockdevIoctlClient *client, gpointer driverRequests) {
  const gulong request = umockdev_ioctl_client_get_request(client);
  if (request == TIOCEXCL || request == TIOCNXCL) {
    umockdev_ioctl_client_complete(client, 0, 0);
    return TRUE;
  }
  if (static_cast<VirtualUsb::DriverRequests *>(driverRequests)->answer(client, request))
    return TRUE;
  int error = 0;
  const int result = umockdev_ioctl_client_execute(client, &error, nullptr);
  umockdev_ioctl_client_complete(client, result, error);
  return TRUE;
}

QString Owned(gchar *text) {
  const QString copy = QString::fromUtf8(text);
  g_free(text);
  return copy;
}

QByteArray Hex4(uint32_t value) {
  return QByteArray::number(value, 16).rightJustified(4, '0');
}

}  // namespace

VirtualUsb::VirtualUsb()
    : bed_(umockdev_testbed_new()),
      ioctls_(umockdev_ioctl_base_new()),
      driverRequests_(std::make_unique<DriverRequests>()) {
  g_signal_connect(ioctls_, "handle-ioctl", G_CALLBACK(HandleIoctl), driverRequests_.get());
  const QString controller = Owned(umockdev_testbed_add_device(
      bed_, "pci", "0000:00:14.0", nullptr, "vendor", "0x8086", nullptr, nullptr));
  hub_ = Owned(umockdev_testbed_add_device(
      bed_, "usb", "usb1", controller.toUtf8().constData(), "idVendor", "1d6b", "idProduct", "0002",
      "busnum", "1", "devpath", "0", nullptr, "DEVTYPE", "usb_device", nullptr));
}

VirtualUsb::~VirtualUsb() {
  g_object_unref(ioctls_);
  g_object_unref(bed_);
}

void VirtualUsb::answerDriverRequest(unsigned long request, int error) {
  std::lock_guard lock(driverRequests_->mutex);
  driverRequests_->errors[request] = error;
}

std::vector<VirtualUsb::DriverRequest> VirtualUsb::driverRequests() const {
  std::lock_guard lock(driverRequests_->mutex);
  return driverRequests_->seen;
}

bool VirtualUsb::inMockEnvironment() {
  return umockdev_in_mock_environment();
}

void VirtualUsb::runUnderPreload(char **argv, const char *program) {
  // umockdev_in_mock_environment() is false until a testbed exists: look at the preload.
  if (qgetenv("LD_PRELOAD").contains("umockdev-preload")) return;
  std::vector<char *> arguments{const_cast<char *>("umockdev-wrapper")};
  for (char **argument = argv; *argument; ++argument) arguments.push_back(*argument);
  arguments.push_back(nullptr);
  execvp("umockdev-wrapper", arguments.data());
  std::fprintf(stderr, "%s: needs umockdev-wrapper (Debian package umockdev)\n", program);
  std::exit(127);
}

VirtualUsb::Device VirtualUsb::add(const QString &name, uint32_t vendor, uint32_t product,
                                   bool withTty, bool busAttributes) {
  const QByteArray vid = Hex4(vendor), pid = Hex4(product);
  const QByteArray port = name.section('-', 1).toLatin1();
  const QByteArray deviceName = name.toUtf8(), hub = hub_.toUtf8();
  Device device;
  device.syspath = Owned(
      busAttributes
          ? umockdev_testbed_add_device(bed_, "usb", deviceName.constData(), hub.constData(),
                                        "idVendor", vid.constData(), "idProduct", pid.constData(),
                                        "product", "QM482", "busnum", "1", "devpath",
                                        port.constData(), nullptr, "DEVTYPE", "usb_device", nullptr)
          : umockdev_testbed_add_device(bed_, "usb", deviceName.constData(), hub.constData(),
                                        "idVendor", vid.constData(), "idProduct", pid.constData(),
                                        nullptr, "DEVTYPE", "usb_device", nullptr));
  const QString interface = Owned(umockdev_testbed_add_device(
      bed_, "usb", (name + ":1.0").toUtf8().constData(), device.syspath.toUtf8().constData(),
      nullptr, "DEVTYPE", "usb_interface", nullptr));
  if (!withTty) return device;

  const int number = ttys_++;
  const QString tty = QStringLiteral("ttyACM%1").arg(number);
  device.devnode = "/dev/" + tty;
  const QString record =
      QStringLiteral("P: %1/%2\nN: %2\nE: SUBSYSTEM=tty\nE: DEVNAME=%3\nA: dev=166:%4\n")
          .arg(interface.mid(4), tty, device.devnode)
          .arg(number);
  GError *error = nullptr;
  // The driver answers before the node appears: a program that sees the device early and
  // opens its tty at once must find the requests answered.
  if (!umockdev_testbed_attach_ioctl(bed_, device.devnode.toUtf8().constData(), ioctls_, &error) ||
      !umockdev_testbed_add_from_string(bed_, record.toUtf8().constData(), &error)) {
    error_ = QString::fromUtf8(error ? error->message : "cannot add the tty node");
    if (error) g_error_free(error);
    return device;
  }
  device.master = umockdev_testbed_get_dev_fd(bed_, device.devnode.toUtf8().constData());
  return device;
}

void VirtualUsb::announce(const Device &device, const char *action) {
  umockdev_testbed_uevent(bed_, device.syspath.toUtf8().constData(), action);
}

VirtualUsb::Device VirtualUsb::plugIn(const QString &name) {
  Device device = add(name, kVendorId, kProductId);
  announce(device, "add");
  return device;
}
