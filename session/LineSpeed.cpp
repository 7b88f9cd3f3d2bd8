#include "LineSpeed.h"

#include <sys/ioctl.h>
#include <termios.h>

#include <cerrno>

#if MRVTQ5DK_SERIAL_DRIVER_REQUESTS
#include <IOKit/serial/ioss.h>

namespace {
constexpr unsigned long kReceiveLatencyMicroseconds = 3;
}

bool SetLineSpeed(int fd, unsigned baud) {
  speed_t speed = baud;
  return ioctl(fd, IOSSIOSPEED, &speed) != -1;
}

bool SetReceiveLatency(int fd) {
  unsigned long microseconds = kReceiveLatencyMicroseconds;
  return ioctl(fd, IOSSDATALAT, &microseconds) != -1;
}

#else

bool SetLineSpeed(int fd, unsigned baud) {
  // Only the rates the attribute record can name.
  static const struct {
    unsigned rate;
    speed_t code;
  } kRates[] = {{1200, B1200},       {2400, B2400},       {4800, B4800},      {9600, B9600},
                {19200, B19200},     {38400, B38400},     {57600, B57600},    {115200, B115200},
                {230400, B230400},   {460800, B460800},   {921600, B921600},  {1000000, B1000000},
                {2000000, B2000000}, {3000000, B3000000}, {4000000, B4000000}};
  for (const auto &entry : kRates) {
    if (entry.rate != baud) continue;
    termios attributes{};
    return tcgetattr(fd, &attributes) == 0 && cfsetspeed(&attributes, entry.code) == 0 &&
           tcsetattr(fd, TCSANOW, &attributes) == 0;
  }
  errno = EINVAL;
  return false;
}

bool SetReceiveLatency(int) {
  return true;
}

#endif
