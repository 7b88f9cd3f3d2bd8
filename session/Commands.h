#pragma once

#include <QString>
#include <cstdint>

// Every command the host sends, as it goes on the wire.
namespace Command {

inline constexpr char kKind[] = "#kind\r\n";
inline constexpr char kDetail[] = "#detail\r\n";
inline constexpr char kSerialNumber[] = "#gser\r\n";
inline constexpr char kVoiceIndex[] = "vi\r\n";
inline constexpr char kLogHistory[] = "lh\r\n";
inline constexpr char kAcknowledge[] = "vx\r\n";

// "vh03\r\n" (paced, newer firmware) or "vr03\r\n" for the clip at 0-based index clip.
inline QString Clip(bool paced, unsigned long clip) {
  return QString::asprintf(paced ? "vh%02lu\r\n" : "vr%02lu\r\n", clip);
}
// "lp000123\r\n": the dive page with that history number.
inline QString Page(int32_t number) {
  return QString::asprintf("lp%06d\r\n", number);
}
// "lr007\r\n": one raw page of the log memory.
inline QString DumpPage(int32_t offset) {
  return QString::asprintf("lr%03d\r\n", offset);
}
// "#cdcwait 8\r\n": the pacing the device is asked to keep.
inline QString Cdcwait(int32_t value) {
  return QStringLiteral("#cdcwait %1\r\n").arg(value);
}

}  // namespace Command
