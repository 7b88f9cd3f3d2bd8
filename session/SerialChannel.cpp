#include "SerialChannel.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

#include "LineSpeed.h"
#include "SystemLog.h"

SerialChannel::SerialChannel() = default;

SerialChannel::~SerialChannel() {
  closePort();
}

std::optional<QString> SerialChannel::openPort(const QString &path, unsigned baud) {
  // The wake-up that stopped the previous port's reader must not stop the next one.
  wakePipe_.drain();

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
    } else if (!SetLineSpeed(fd, baud)) {
      failure = "Error: Baud Rate out of bounds";
    } else if (!SetReceiveLatency(fd)) {
      failure = "Error: coudln't set serial latency";
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

namespace {

// One command is one write; a write the line cut short (a signal, a full output queue)
// goes on from where it stopped. False when the line refuses the bytes (hung up, gone).
bool WriteAll(int fd, const char *bytes, size_t size) {
  while (size > 0) {
    const ssize_t n = write(fd, bytes, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    bytes += n;
    size -= size_t(n);
  }
  return true;
}

}  // namespace

void SerialChannel::closePort() {
  std::unique_lock lock(descriptorMutex_);
  const int fd = serialFileDescriptor.exchange(-1);
  if (fd != -1) close(fd);
}

void SerialChannel::wakeReader() {
  wakePipe_.wake();
}

bool SerialChannel::writeString(const QString &text) {
  std::shared_lock lock(descriptorMutex_);
  const int fd = serialFileDescriptor.load();
  if (fd == -1) {
    SystemLog("writeString:serialFileDescripter %d", fd);
    return false;
  }
  const QByteArray bytes = text.toUtf8();
  const bool written = WriteAll(fd, bytes.constData(), size_t(bytes.size()));
  SystemLog("writeString:%-.28s", bytes.constData());
  if (!written) SystemLog("writeString:write error %d", errno);
  return written;
}

void SerialChannel::discardInput() {
  std::shared_lock lock(descriptorMutex_);
  const int fd = serialFileDescriptor.load();
  if (fd != -1) tcflush(fd, TCIFLUSH);
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
  const bool written = WriteAll(fd, data.constData() + start, size_t(size));
  SystemLog("writeByte:%d,%d", start, size);
  return written;
}

ssize_t SerialChannel::readPort(char *buffer, size_t size) {
  const int fd = serialFileDescriptor.load();
  if (fd == -1) {
    errno = EBADF;
    return -1;
  }
  pollfd fds[2] = {{fd, POLLIN, 0}, {wakePipe_.readEnd(), POLLIN, 0}};
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
