#include "Transitions.h"

#include <algorithm>

#include "Commands.h"
#include "Localization.h"
#include "SessionContext.h"
#include "SystemLog.h"

void Transitions::enter(SessionStatus next) {
  context_.state.phase = next;
  reconnectOffered_ = false;
  publishPhase();
}

void Transitions::offerRequests(bool offered) {
  offered_ = offered;
  publishPhase();
}

DevicePhase Transitions::devicePhase() const {
  const SessionState &state = context_.state;
  // A port that closed (the cable pulled, the line hung up) leaves nothing to ask, whatever
  // the session was doing: a clip under way ends by its stall supervision.
  if (!context_.channel.isOpen()) return DevicePhase::Absent;
  switch (state.phase.load()) {
    case DISCONNECTED:
      return reconnectOffered_ ? DevicePhase::Stopped : DevicePhase::Absent;
    case TRY_CONNECT_TX_KIND:
      return DevicePhase::Opening;
    case TRY_CONNECT_RX_KIND:
    case TRY_CONNECT_KIND_DONE:
    case TRY_CONNECT_TX_DETAIL:
    case TRY_CONNECT_RX_DETAIL:
    case TRY_CONNECT_DETAIL_DONE:
    case TRY_CONNECT_TX_GSER:
    case TRY_CONNECT_RX_GSER:
      return DevicePhase::Identifying;
    default:
      break;
  }
  if (state.indexSequence == 1) return DevicePhase::Listing;
  // A download is under way from the moment it is asked for, even while its request waits
  // for the line to fall quiet.
  const std::optional<Operation> underWay = context_.operation.current();
  const bool transfer = underWay && *underWay != Operation::ConnectAndList;
  return offered_ && !transfer ? DevicePhase::Idle : DevicePhase::Busy;
}

void Transitions::publishPhase() {
  const DevicePhase phase = devicePhase();
  const bool portOpen = context_.channel.isOpen();
  context_.model.update([phase, portOpen](DeviceState &published) {
    published.phase = phase;
    published.portOpen = portOpen;
  });
}

bool Transitions::request(int32_t status, int32_t selector, const QString &command,
                          bool dropSequenceOnFailure) {
  SessionState &state = context_.state;
  enter(SessionStatus(status));
  state.receiveType = selector;
  return request(command, dropSequenceOnFailure);
}

bool Transitions::request(const QString &command, bool dropSequenceOnFailure) {
  SessionState &state = context_.state;
  context_.channel.discardInput();
  state.lastLineActivityMs = now();
  if (context_.channel.writeString(command)) return true;
  if (dropSequenceOnFailure) state.indexSequence = 0;
  // An exchange whose request did not go out is over: nothing of it may linger and turn
  // the next one away, and no state may wait for a reply that cannot come.
  const QString text = QString::fromLatin1(kPowerOffMessage);
  if (state.phase == CONNECTED_IDLE) {
    endUnsentAtIdle(Failure::NoPort, text, true);
  } else {
    disconnect(Failure::NoPort, text);
  }
  return false;
}

bool Transitions::awaitingReply() const {
  const SessionState &state = context_.state;
  switch (state.phase.load()) {
    case TRY_CONNECT_RX_KIND:
    case TRY_CONNECT_RX_DETAIL:
    case TRY_CONNECT_RX_GSER:
    case RX_VOICE_INDEX:
    case RX_LOG_HISTORY:
    case TRY_RX_VOICE_WAIT:
      return true;
    case DISCONNECTED:
      return false;
    default:
      break;
  }
  // A dive download and a reread of the lists run in the idle state.
  const int32_t selector = state.receiveType;
  return selector == eSERIAL_RX_LOG_DATA || selector == eSERIAL_RX_VOICE_INDEX ||
         selector == eSERIAL_RX_LOG_HISTORY;
}

void Transitions::checkDeadline() {
  if (!awaitingReply()) return;
  const int64_t silentMs = now() - context_.state.lastLineActivityMs;
  if (silentMs < kReplyDeadlineMs) return;
  SystemLog("no reply in %s for %lld ms", SessionStatusName(context_.state.phase),
            static_cast<long long>(silentMs));
  disconnect(Failure::NotAnswering, Localized("device_not_answering"));
}

bool Transitions::lineQuiet() const {
  const SessionState &state = context_.state;
  const int64_t t = now();
  const bool replyDue =
      state.trailingReplyPending && t - state.lastLineActivityMs < kReplyDeadlineMs;
  return !replyDue && t - state.lastByteMs >= kQuietLineMs;
}

void Transitions::byteReceived() {
  const int64_t t = now();
  context_.state.lastByteMs = t;
  context_.state.lastLineActivityMs = t;
}

void Transitions::lineLost() {
  publishPhase();  // the port has closed
  const std::optional<Operation> operation = context_.operation.current();
  // A clip keeps its stall supervision, which tells in five seconds; anything else ends
  // now rather than at the deadline.
  if (!operation || *operation == Operation::DownloadClip) return;
  disconnect(Failure::Unplugged, Localized("device_disconnected"));
}

void Transitions::portGoneBeforeRequest() {
  if (context_.state.phase != CONNECTED_IDLE) return;
  endUnsentAtIdle(Failure::Unplugged, Localized("device_disconnected"), false);
}

void Transitions::endUnsentAtIdle(Failure failure, const QString &sentence, bool boxWhenIdle) {
  stopTransfers();
  offerRequests(true);
  if (!context_.operation.fail(failure, sentence) && boxWhenIdle) {
    context_.model.tell(sentence);
  }
}

void Transitions::freshStart() {
  SessionState &state = context_.state;
  context_.operation.fail(Failure::Unplugged, Localized("device_disconnected"));
  stopTransfers();
  state.clipRetries = 0;
  enter(TRY_CONNECT_TX_KIND);
  state.lastLineActivityMs = now();
}

void Transitions::cancel() {
  SessionState &state = context_.state;
  const int32_t status = state.phase;
  if (!context_.operation.active()) return;
  SystemLog("cancel in %s", SessionStatusName(status));
  const bool connected =
      status == CONNECTED_IDLE || status == TRY_RX_VOICE_WAIT || status == TRY_TX_VOICE_RETRY;
  if (!connected) {
    disconnect(Failure::Cancelled, Localized("transfer_cancelled"));
    return;
  }
  const bool clipUnderWay = state.clipDownloadActive != 0 || status != CONNECTED_IDLE;
  stopTransfers();
  state.clipRetries = 0;
  enter(CONNECTED_IDLE);
  context_.operation.fail(Failure::Cancelled, Localized("transfer_cancelled"));
  if (!clipUnderWay) {
    offerRequests(true);
    return;
  }
  context_.whenLineQuiet([this] {
    if (context_.state.phase == CONNECTED_IDLE && !context_.operation.active()) {
      requestCdcwait();
    }
  });
}

void Transitions::requestCdcwait() {
  const int32_t level = std::clamp<int32_t>(context_.state.cdcwaitLevel, 0, kHighestCdcwaitLevel);
  request(TRY_RX_VOICE_WAIT, eSERIAL_RX_RESPONSE, Command::Cdcwait(CDCWAIT_LEVELS[size_t(level)]));
}

void Transitions::finish(Outcome outcome) {
  context_.operation.finish(std::move(outcome));
}

void Transitions::finishWhenIdle(Outcome outcome) {
  kept_.set(std::move(outcome));
}

void Transitions::idleAgain(std::optional<Outcome> outcome) {
  std::optional<Outcome> kept = kept_.get();
  kept_.set(std::nullopt);
  if (outcome) kept = std::move(outcome);
  if (kept) finish(std::move(*kept));
}

void Transitions::disconnect(Failure failure, const QString &sentence, bool offerReconnect) {
  stopTransfers();
  enter(DISCONNECTED);
  offerRequests(false);
  if (offerReconnect && context_.channel.isOpen()) {
    reconnectOffered_ = true;
    publishPhase();
  }
  if (!context_.operation.fail(failure, sentence) && !sentence.isEmpty()) {
    context_.model.tell(sentence);
  }
}

int64_t Transitions::now() const {
  return context_.clockMs();
}

void Transitions::stopTransfers() {
  SessionState &state = context_.state;
  if (context_.hooks.closeClipFile) context_.hooks.closeClipFile();
  state.clipDownloadActive = 0;
  state.receiveType = eSERIAL_RX_RESPONSE;
  state.indexSequence = 0;
  state.logDownloadMode = 0;
  state.pageReceived = 0;
  state.trailingReplyPending = false;
  kept_.set(std::nullopt);
}
