#pragma once

#include <QPixmap>

// The QM482 on its USB cable, drawn for the window while no device is connected.
QPixmap DevicePicture(int height);
