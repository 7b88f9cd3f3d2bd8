#pragma once

// The two requests that follow the raw attributes when the port opens. Where the serial
// driver takes them (macOS), the speed goes through its arbitrary-rate request and the
// receive latency is set to 3 microseconds; elsewhere the speed goes through the attribute
// record and there is no latency to set.

// False (with errno) when the rate is refused.
bool SetLineSpeed(int fd, unsigned baud);
// False (with errno) when the latency is refused; true where there is none to set.
bool SetReceiveLatency(int fd);
