#include "PseudoTerminal.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace sim {

int OpenPseudoTerminal(QString &slavePath, QString &error) {
  // Close-on-exec set apart: macOS takes only the read-write and no-terminal flags here.
  const int master = posix_openpt(O_RDWR | O_NOCTTY);
  if (master < 0 || fcntl(master, F_SETFD, FD_CLOEXEC) != 0 || grantpt(master) != 0 ||
      unlockpt(master) != 0) {
    error = QString::fromLocal8Bit(std::strerror(errno));
    if (master >= 0) close(master);
    return -1;
  }
  termios attributes{};
  if (tcgetattr(master, &attributes) == 0) {
    cfmakeraw(&attributes);
    tcsetattr(master, TCSANOW, &attributes);
  }
  slavePath = QString::fromLocal8Bit(ptsname(master));
  return master;
}

}  // namespace sim
