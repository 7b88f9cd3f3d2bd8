// Test double: the serial driver's requests for an arbitrary speed and the receive latency.
#pragma once

#include <sys/ioctl.h>
#include <termios.h>

#define IOSSIOSPEED _IOW('T', 2, speed_t)
#define IOSSDATALAT _IOW('T', 0, unsigned long)
