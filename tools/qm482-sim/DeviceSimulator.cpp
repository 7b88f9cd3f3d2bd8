#include "DeviceSimulator.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <QDateTime>
#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <thread>

namespace sim {

namespace {

constexpr int64_t kAcknowledgeWindow = 2040;
constexpr int64_t kUsbPacketBytes = 64;

int64_t NowMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

// "lp000007" -> "lp": replies are named by their command's letters.
QByteArray CommandName(const QByteArray &line) {
  QByteArray name = line.startsWith('#') ? line.mid(1) : line;
  qsizetype end = 0;
  while (end < name.size() && std::isalpha(static_cast<unsigned char>(name[end]))) ++end;
  return name.left(end);
}

QByteArray DetailReply(const Contents &contents) {
  QList<QByteArray> fields = {"OK", contents.firmware, "QM482", "2023-10-01", "JPN", "BAT85"};
  if (contents.detailFields == 7) fields.insert(4, "HW2");
  return fields.join(' ') + "\r\n";
}

}  // namespace

DeviceSimulator::DeviceSimulator(Contents contents, Options options)
    : contents_(std::move(contents)), options_(std::move(options)), garbageState_(options_.seed) {
  if (options_.longIndex) {
    // Enough entries for a reply of well over 4096 bytes.
    for (int i = 0; contents_.clips.size() < 220; ++i) {
      Clip clip = contents_.clips.value(i % std::max<qsizetype>(1, contents_.clips.size()));
      clip.start = clip.start.addSecs(60 * (i + 1));
      contents_.clips.append(clip);
    }
  }
}

DeviceSimulator::~DeviceSimulator() = default;

void DeviceSimulator::stop() {
  stopPipe_.wake();
}

QList<QByteArray> DeviceSimulator::commands() const {
  std::lock_guard lock(commandsMutex_);
  // A copy of its own: the list's buffer is not shared with the serving thread.
  QList<QByteArray> copy;
  copy.reserve(commands_.size());
  for (const QByteArray &command : commands_)
    copy.append(QByteArray(command.constData(), command.size()));
  return copy;
}

QList<int64_t> DeviceSimulator::commandTimesMs() const {
  std::lock_guard lock(commandsMutex_);
  return commandTimesMs_;
}

void DeviceSimulator::serve(int masterFd) {
  fcntl(masterFd, F_SETFL, fcntl(masterFd, F_GETFL) | O_NONBLOCK);
  lastRefillMs_ = NowMs();
  char buffer[4096];
  for (;;) {
    const int64_t now = NowMs();
    feedClip(now);
    if (!writeSome(masterFd, now)) return;

    pollfd fds[2] = {{masterFd, POLLIN, 0}, {stopPipe_.readEnd(), POLLIN, 0}};
    const int64_t wake = nextWakeMs(NowMs());
    const int timeout =
        wake < 0 ? 200 : static_cast<int>(std::clamp<int64_t>(wake - NowMs(), 0, 200));
    if (!queue_.empty() && wake >= 0 && wake <= NowMs()) fds[0].events |= POLLOUT;
    poll(fds, 2, timeout);
    if (fds[1].revents & POLLIN) return;
    if (fds[0].revents & POLLIN) {
      const ssize_t n = read(masterFd, buffer, sizeof buffer);
      if (n > 0) handleInput(buffer, static_cast<size_t>(n));
    }
    if (fds[0].revents & (POLLHUP | POLLERR)) {
      // Nobody holds the other side open (yet, or any more): wait for the host.
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }
}

void DeviceSimulator::handleInput(const char *bytes, size_t length) {
  input_.append(bytes, static_cast<qsizetype>(length));
  for (qsizetype end; (end = input_.indexOf("\r\n")) >= 0;) {
    const QByteArray line = input_.left(end);
    input_.remove(0, end + 2);
    {
      std::lock_guard lock(commandsMutex_);
      commands_.append(line);
      commandTimesMs_.append(NowMs());
    }
    if (options_.echoCommands) std::fprintf(stderr, "qm482-sim: <- %s\n", line.constData());
    handleCommand(line);
  }
  if (input_.size() > 4096) input_.clear();  // not a command; the device forgets it
}

void DeviceSimulator::handleCommand(const QByteArray &line) {
  const QByteArray name = CommandName(line);
  const QByteArray argument = line.mid(line.startsWith('#') ? name.size() + 1 : name.size());
  if (name == "vx") {
    if (clipActive_ && clip_.acknowledged) clip_.credit += kAcknowledgeWindow;
    return;
  }
  // Any other command ends a clip still streaming, as the device drops a transfer the
  // host has given up on.
  clipActive_ = false;
  if (options_.silentCommands.contains(name)) return;

  if (name == "kind") {
    reply(name, "OK " + contents_.model + "\r\n");
  } else if (name == "detail") {
    reply(name, DetailReply(contents_));
  } else if (name == "gser") {
    reply(name, "OK QM482 SN " + contents_.serialNumber + " 00\r\n");
  } else if (name == "cdcwait") {
    reply(name, "cdcwait = " + QByteArray::number(argument.trimmed().toInt()) + "\r\n");
  } else if (name == "vi") {
    reply(name, VoiceIndexReply(contents_));
  } else if (name == "vh" || name == "vr") {
    startClip(argument, name == "vh");
  } else if (name == "lh") {
    reply(name, HistoryRecord(contents_), true);
  } else if (name == "lp") {
    const Dive *dive = contents_.dive(argument.toInt());
    reply(name, dive ? DivePage(*dive) : ErasedPage(), true);
  } else if (name == "lr") {
    const int offset = argument.toInt();
    reply(name,
          contents_.dives.isEmpty() ? ErasedPage()
                                    : DivePage(contents_.dives[offset % contents_.dives.size()]),
          true);
  }
}

void DeviceSimulator::reply(const QByteArray &name, QByteArray bytes, bool payload) {
  if (options_.garbageReplies.contains(name)) {
    for (char &byte : bytes) {
      garbageState_ = garbageState_ * 1103515245u + 12345u;
      byte = static_cast<char>(garbageState_ >> 16);
    }
  }
  int64_t at = NowMs() + options_.latencyMs;
  qsizetype from = 0;
  for (int offset : options_.splitReplies.value(name)) {
    if (offset <= from || offset >= bytes.size()) continue;
    queue_.push_back({bytes.mid(from, offset - from), at, payload});
    from = offset;
    at += options_.splitGapMs;
  }
  queue_.push_back({bytes.mid(from), at, payload});
}

void DeviceSimulator::startClip(const QByteArray &argument, bool acknowledged) {
  const int number = argument.toInt();
  if (number < 0 || number >= contents_.clips.size()) return;
  clip_ = ClipStream{};
  clip_.audio = ClipAudio(contents_.clips[number], contents_.ringFirst, contents_.ringLast);
  clip_.acknowledged = acknowledged;
  clip_.credit = acknowledged ? kAcknowledgeWindow : INT64_MAX;
  clip_.resumeAtMs = NowMs() + options_.latencyMs;  // the first byte comes after the latency
  clipActive_ = true;
}

// Moves the clip's next bytes into the queue when the queue has drained, so that the
// clip is paced by the same rate limit as every reply.
void DeviceSimulator::feedClip(int64_t nowMs) {
  if (!clipActive_ || !queue_.empty()) return;
  if (clip_.resumeAtMs > nowMs) return;
  if (clip_.stalled) {
    if (options_.stallResumeMs < 0) return;
    clip_.stalled = false;
  }
  if (options_.stallAfterBytes >= 0 && clip_.sent == options_.stallAfterBytes &&
      !clip_.stallTaken) {
    clip_.stallTaken = clip_.stalled = true;
    clip_.resumeAtMs = options_.stallResumeMs < 0 ? INT64_MAX : nowMs + options_.stallResumeMs;
    return;
  }
  const qsizetype remaining = clip_.audio.size() - clip_.sent;
  if (remaining == 0) {
    if (!clip_.extraSent && options_.extraBytes > 0) {
      queue_.push_back({QByteArray(options_.extraBytes, '\x55'), nowMs, true});
    }
    clip_.extraSent = true;
    clipActive_ = false;
    return;
  }
  int64_t take = std::min<int64_t>({remaining, 4096, clip_.credit});
  if (options_.stallAfterBytes > clip_.sent)
    take = std::min<int64_t>(take, options_.stallAfterBytes - clip_.sent);
  if (take <= 0) return;
  queue_.push_back({clip_.audio.mid(clip_.sent, take), nowMs, true});
  clip_.sent += take;
  if (clip_.acknowledged) clip_.credit -= take;
}

int64_t DeviceSimulator::nextWakeMs(int64_t nowMs) const {
  if (hangupAtMs_ >= 0) return hangupAtMs_;
  if (!queue_.empty()) {
    int64_t at = std::max(queue_.front().notBeforeMs, nowMs);
    const double packet = std::min<double>(kUsbPacketBytes, double(queue_.front().bytes.size()));
    if (options_.bytesPerSecond > 0 && tokens_ < packet) {
      at = std::max<int64_t>(
          at,
          nowMs + 1 + static_cast<int64_t>(1000 * (packet - tokens_) / options_.bytesPerSecond));
    }
    return at;
  }
  if (clipActive_) return clip_.resumeAtMs == INT64_MAX ? -1 : std::max(clip_.resumeAtMs, nowMs);
  return -1;
}

bool DeviceSimulator::writeSome(int masterFd, int64_t nowMs) {
  if (options_.bytesPerSecond > 0) {
    // A bucket of at most 10 ms worth of bytes (and at least 64) keeps the rate even.
    const double cap = std::max(double(kUsbPacketBytes), options_.bytesPerSecond / 100.0);
    tokens_ = std::min(cap, tokens_ + (nowMs - lastRefillMs_) * options_.bytesPerSecond / 1000.0);
  }
  lastRefillMs_ = nowMs;
  while (!queue_.empty() && queue_.front().notBeforeMs <= nowMs) {
    Segment &segment = queue_.front();
    int64_t allowed = segment.bytes.size();
    if (options_.bytesPerSecond > 0) {
      // The device sits on USB: bytes leave in whole packets of up to 64, however slow the
      // link, so a short reply is never cut in two by the rate limit.
      if (tokens_ < std::min<double>(kUsbPacketBytes, double(allowed))) return true;
      allowed = std::min<int64_t>(
          allowed, static_cast<int64_t>(tokens_) / kUsbPacketBytes * kUsbPacketBytes);
      if (allowed == 0) allowed = segment.bytes.size();
    }
    if (segment.payload && options_.hangupAfterBytes >= 0) {
      allowed = std::min(allowed, options_.hangupAfterBytes - payloadSent_);
      if (allowed <= 0) {
        // Let the host read what was sent before the line goes dead.
        if (hangupAtMs_ < 0) hangupAtMs_ = nowMs + 100;
        if (nowMs < hangupAtMs_) return true;
        hungUp_ = true;
        close(masterFd);
        return false;
      }
    }
    if (allowed <= 0) return true;
    const ssize_t written =
        write(masterFd, segment.bytes.constData(), static_cast<size_t>(allowed));
    if (written <= 0) return true;  // the pty is full or nobody reads yet
    if (options_.bytesPerSecond > 0) tokens_ -= static_cast<double>(written);
    if (segment.payload) payloadSent_ += written;
    segment.bytes.remove(0, written);
    if (segment.bytes.isEmpty()) queue_.pop_front();
  }
  return true;
}

}  // namespace sim
