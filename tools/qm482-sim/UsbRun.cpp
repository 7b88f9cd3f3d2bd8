#include "UsbRun.h"

#include <QProcess>
#include <cstdio>
#include <cstring>
#include <thread>

#include "VirtualUsb.h"

void EnterVirtualUsbIfAsked(char **argv) {
  for (int i = 1; argv[i] && std::strcmp(argv[i], "--") != 0; ++i) {
    if (std::strcmp(argv[i], "--usb") == 0) VirtualUsb::runUnderPreload(argv, "qm482-sim");
  }
}

int RunOnVirtualUsb(sim::Contents contents, const sim::Options &options, const QStringList &command,
                    int plugInAfterMs) {
  if (command.isEmpty()) {
    std::fprintf(stderr, "qm482-sim: --usb needs a command after \"--\"\n");
    return 2;
  }
  VirtualUsb usb;
  sim::DeviceSimulator device(std::move(contents), options);
  std::thread serving;
  const auto plugIn = [&] {
    const VirtualUsb::Device plugged = usb.plugIn(QStringLiteral("1-1"));
    if (plugged.master < 0) {
      std::fprintf(stderr, "qm482-sim: cannot plug in: %s\n", qPrintable(usb.error()));
      return;
    }
    std::fprintf(stderr, "qm482-sim: plugged in as USB 1209:4d52 on %s\n",
                 qPrintable(plugged.devnode));
    serving = std::thread([&device, master = plugged.master] { device.serve(master); });
  };

  if (plugInAfterMs <= 0) plugIn();
  QProcess program;
  program.setProcessChannelMode(QProcess::ForwardedChannels);
  program.setInputChannelMode(QProcess::ForwardedInputChannel);
  program.start(command.first(), command.mid(1));
  if (!program.waitForStarted()) {
    std::fprintf(stderr, "qm482-sim: cannot run %s: %s\n", qPrintable(command.first()),
                 qPrintable(program.errorString()));
    device.stop();
    if (serving.joinable()) serving.join();
    return 127;
  }
  if (plugInAfterMs > 0 && !program.waitForFinished(plugInAfterMs)) plugIn();
  program.waitForFinished(-1);
  device.stop();
  if (serving.joinable()) serving.join();
  return program.exitStatus() == QProcess::NormalExit ? program.exitCode() : 128;
}
