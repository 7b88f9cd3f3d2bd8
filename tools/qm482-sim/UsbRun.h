#pragma once

#include <QStringList>

#include "DeviceSimulator.h"
#include "SimContents.h"

// Called first thing: a run with --usb goes on under umockdev's preload, without which the
// virtual bus is not seen (the process is started again under it).
void EnterVirtualUsbIfAsked(char **argv);

// Plays the device plugged into a virtual USB bus while command runs on that bus; the
// device is plugged in plugInAfterMs after the command starts (0: before). Returns the
// command's exit status.
int RunOnVirtualUsb(sim::Contents contents, const sim::Options &options, const QStringList &command,
                    int plugInAfterMs);
