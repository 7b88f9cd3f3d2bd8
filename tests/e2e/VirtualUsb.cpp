// GLib's headers use "signals" as a name, which Qt's headers make a keyword: GLib first.
#include <umockdev.h>

#include "VirtualUsb.h"

#include <gtest/gtest.h>
#include <sys/ioctl.h>

namespace {

// The emulated tty passes the terminal ioctls through; exclusive use it refuses, so answer
// that here as a real tty would.
gboolean HandleIoctl(UMockdevIoctlBase *, UMockdevIoctlClient *client, gpointer) {
  const gulong request = umockdev_ioctl_client_get_request(client);
  if (request == TIOCEXCL || request == TIOCNXCL) {
    umockdev_ioctl_client_complete(client, 0, 0);
    return TRUE;
  }
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

}  // namespace

VirtualUsb::VirtualUsb() : bed_(umockdev_testbed_new()), ioctls_(umockdev_ioctl_base_new()) {
  EXPECT_TRUE(umockdev_in_mock_environment()) << "run under umockdev-wrapper";
  g_signal_connect(ioctls_, "handle-ioctl", G_CALLBACK(HandleIoctl), nullptr);
  // As on a PC: a host controller, its root hub, the devices on the hub's ports.
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

VirtualUsb::Device VirtualUsb::add(const QString &name, uint32_t vendor, uint32_t product,
                                   bool withTty, bool usbAttributes) {
  const QByteArray vid = QByteArray::number(vendor, 16).rightJustified(4, '0');
  const QByteArray pid = QByteArray::number(product, 16).rightJustified(4, '0');
  const QByteArray port = name.section('-', 1).toLatin1();
  Device device;
  device.syspath =
      usbAttributes
          ? Owned(umockdev_testbed_add_device(
                bed_, "usb", name.toUtf8().constData(), hub_.toUtf8().constData(), "idVendor",
                vid.constData(), "idProduct", pid.constData(), "product", "QM482", "busnum", "1",
                "devpath", port.constData(), nullptr, "DEVTYPE", "usb_device", nullptr))
          : Owned(umockdev_testbed_add_device(bed_, "usb", name.toUtf8().constData(),
                                              hub_.toUtf8().constData(), "idVendor",
                                              vid.constData(), "idProduct", pid.constData(),
                                              nullptr, "DEVTYPE", "usb_device", nullptr));
  const QString interface = Owned(umockdev_testbed_add_device(
      bed_, "usb", (name + ":1.0").toUtf8().constData(), device.syspath.toUtf8().constData(),
      nullptr, "DEVTYPE", "usb_interface", nullptr));
  if (!withTty) return device;

  const QString tty = QStringLiteral("ttyACM%1").arg(ttys_++);
  device.devnode = "/dev/" + tty;
  const QString record = QStringLiteral(
                             "P: %1/%2\nN: %2\nE: SUBSYSTEM=tty\nE: DEVNAME=%3\n"
                             "A: dev=166:%4\n")
                             .arg(interface.mid(4), tty, device.devnode)
                             .arg(ttys_ - 1);
  GError *error = nullptr;
  EXPECT_TRUE(umockdev_testbed_add_from_string(bed_, record.toUtf8().constData(), &error))
      << (error ? error->message : "");
  EXPECT_TRUE(
      umockdev_testbed_attach_ioctl(bed_, device.devnode.toUtf8().constData(), ioctls_, nullptr));
  device.master = umockdev_testbed_get_dev_fd(bed_, device.devnode.toUtf8().constData());
  EXPECT_GE(device.master, 0);
  return device;
}

void VirtualUsb::announce(const Device &device, const char *action) {
  umockdev_testbed_uevent(bed_, device.syspath.toUtf8().constData(), action);
}

VirtualUsb::Device VirtualUsb::plugIn(const QString &name, uint32_t vendor, uint32_t product) {
  Device device = add(name, vendor, product);
  announce(device, "add");
  return device;
}

std::unique_ptr<SimulatedDevice> SimulatorBehind(const VirtualUsb::Device &device,
                                                 sim::Contents contents, sim::Options options) {
  return std::make_unique<SimulatedDevice>(std::move(contents), std::move(options), device.master);
}
