#pragma once

#include <termios.h>

#include <QByteArray>
#include <QString>
#include <atomic>
#include <cstdint>
#include <optional>
#include <shared_mutex>

#include "WakePipe.h"

// The one open descriptor of the device's serial port and the two ways commands leave the
// host. Writes come from the main thread and the receive thread; each command is one
// write call, and commands of different threads belong to different protocol steps.
class SerialChannel {
 public:
  SerialChannel();
  ~SerialChannel();
  SerialChannel(const SerialChannel &) = delete;
  SerialChannel &operator=(const SerialChannel &) = delete;

  // Opens and configures the port: exclusive, blocking, raw, at baud. Returns the error
  // message on failure (the port is then closed). The caller closes a port already open
  // first, with its reader stopped.
  std::optional<QString> openPort(const QString &path, unsigned baud);

  // Closes the port. Only the reading thread itself, or the owner once no thread reads,
  // closes it: a descriptor closed under a waiting read could be reused by another file.
  void closePort();
  // Ends a read waiting on the port, and the next one, with a failure.
  void wakeReader();

  bool isOpen() const { return serialFileDescriptor.load() != -1; }
  int descriptor() const { return serialFileDescriptor.load(); }

  // Writes the text's bytes; false (and a log line) when no port is open or the line
  // refused them.
  bool writeString(const QString &text);
  bool writeString(const char *text) { return writeString(QString::fromLatin1(text)); }
  // Bytes start .. start + size of data in one write.
  bool writeByte(const QByteArray &data, int32_t start, int32_t size);
  // Drops whatever the device sent that nobody has read yet: the tail of an earlier reply
  // must not be taken for the start of the next.
  void discardInput();

  // Waits for bytes and reads up to size of them. Returns the count, or a negative value
  // when the port is closed, was closed while waiting, or hung up.
  ssize_t readPort(char *buffer, size_t size);

  // -1 when no port is open.
  std::atomic<int> serialFileDescriptor{-1};
  // The attributes the port had when opened; kept, never written back.
  termios gOriginalTTYAttrs{};

 private:
  WakePipe wakePipe_;
  // Writes hold it shared, closing holds it alone: no write lands on a reused descriptor.
  std::shared_mutex descriptorMutex_;
};
