#include "SerialChannel.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

#include "SystemLog.h"

namespace {

// On Linux the speed goes through the attribute record, so only the rates it can name are
// accepted; the driver requests for arbitrary rates and receive latency exist on macOS only.
bool SetSpeed(int fd, unsigned baud) {
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

}  // namespace

SerialChannel::SerialChannel() {
  if (pipe2(wakePipe_, O_CLOEXEC | O_NONBLOCK) != 0) wakePipe_[0] = wakePipe_[1] = -1;
}

SerialChannel::~SerialChannel() {
  closePort();
  for (int fd : wakePipe_) {
    if (fd >= 0) close(fd);
  }
}

std::optional<QString> SerialChannel::openPort(const QString &path, unsigned baud) {
  // The wake-up that stopped the previous port's reader must not stop the next one.
  char drain[64];
  while (read(wakePipe_[0], drain, sizeof drain) > 0) {
  }

  const QByteArray name = path.toUtf8();
  const int fd = open(name.constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  const char *failure = nullptr;
  if (fd == -1) {
    failure = "Error: couldn't open serial port";
  } else {
    serialFileDescriptor = fd;
    termios raw{};
    if (ioctl(fd, TIOCEXCL) == -1 || fcntl(fd, F_SETFL, 0) == -1) {
      failure = "Error: couldn't obtain lock on serial port";
    } else if (tcgetattr(fd, &gOriginalTTYAttrs) == -1) {
      failure = "Error: couldn't get serial attributes";
    } else if (raw = gOriginalTTYAttrs, cfmakeraw(&raw), tcsetattr(fd, TCSANOW, &raw) == -1) {
      failure = "Error: coudln't set serial attributes";
    } else if (!SetSpeed(fd, baud)) {
      failure = "Error: Baud Rate out of bounds";
    }
  }
  if (failure == nullptr) {
    SystemLog("serial port open:%s", name.constData());
    return std::nullopt;
  }
  SystemLog("serial port open error:%s no:%d", failure, errno);
  if (fd != -1) {
    close(fd);
    serialFileDescriptor = -1;
  }
  return QString::fromLatin1(failure);
}

void SerialChannel::closePort() {
  std::unique_lock lock(descriptorMutex_);
  const int fd = serialFileDescriptor.exchange(-1);
  if (fd != -1) close(fd);
}

void SerialChannel::wakeReader() {
  const char wake = 1;
  [[maybe_unused]] ssize_t written = write(wakePipe_[1], &wake, 1);
}

bool SerialChannel::writeString(const QString &text) {
  std::shared_lock lock(descriptorMutex_);
  const int fd = serialFileDescriptor.load();
  if (fd == -1) {
    SystemLog("writeString:serialFileDescripter %d", fd);
    return false;
  }
  const QByteArray bytes = text.toUtf8();
  [[maybe_unused]] ssize_t written =
      write(fd, bytes.constData(), static_cast<size_t>(bytes.size()));
  SystemLog("writeString:%-.28s", bytes.constData());
  return true;
}

bool SerialChannel::writeByte(const QByteArray &data, int32_t start, int32_t size) {
  std::shared_lock lock(descriptorMutex_);
  const int fd = serialFileDescriptor.load();
  if (fd == -1) {
    SystemLog("writeByte:serialFileDescripter %d", fd);
    return false;
  }
  if (start < 0 || size < 0 || data.size() < int64_t{start} + size) {
    SystemLog("writeByte size error!:%d,%d length%lu", start, size,
              static_cast<unsigned long>(data.size()));
    return false;
  }
  [[maybe_unused]] ssize_t written = write(fd, data.constData() + start, static_cast<size_t>(size));
  SystemLog("writeByte:%d,%d", start, size);
  return true;
}

ssize_t SerialChannel::readPort(char *buffer, size_t size) {
  const int fd = serialFileDescriptor.load();
  if (fd == -1) {
    errno = EBADF;
    return -1;
  }
  pollfd fds[2] = {{fd, POLLIN, 0}, {wakePipe_[0], POLLIN, 0}};
  while (poll(fds, 2, -1) == -1) {
    if (errno != EINTR) return -1;
  }
  if (fds[1].revents & POLLIN) {  // told to stop: the port is being given up
    errno = EBADF;
    return -1;
  }
  const ssize_t n = read(fd, buffer, size);
  // A tty that has hung up (the device unplugged) reads as end of file on Linux, again and
  // again; it is a read error like any other.
  if (n == 0 && (fds[0].revents & (POLLHUP | POLLERR))) {
    errno = EIO;
    return -1;
  }
  return n;
}
