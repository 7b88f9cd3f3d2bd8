#include "WakePipe.h"

#include <fcntl.h>
#include <unistd.h>

WakePipe::WakePipe() {
  if (pipe(ends_) != 0) {
    ends_[0] = ends_[1] = -1;
    return;
  }
  for (int fd : ends_) {
    fcntl(fd, F_SETFD, FD_CLOEXEC);
    fcntl(fd, F_SETFL, O_NONBLOCK);
  }
}

WakePipe::~WakePipe() {
  for (int fd : ends_) {
    if (fd >= 0) close(fd);
  }
}

void WakePipe::wake() {
  const char byte = 1;
  [[maybe_unused]] ssize_t written = write(ends_[1], &byte, 1);
}

void WakePipe::drain() {
  char bytes[64];
  while (read(ends_[0], bytes, sizeof bytes) > 0) {
  }
}
