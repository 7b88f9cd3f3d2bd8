#pragma once

#include <QString>
#include <atomic>
#include <cstdint>
#include <optional>

#include "DeviceState.h"
#include "Outcome.h"
#include "SessionState.h"

class SessionContext;

// The session's states and every move between them. Only enter() changes the state; the
// moves that every flow shares live here too: starting an exchange (the input left over
// from the last one dropped, the reply deadline armed), the deadline that ends an
// exchange the device stopped answering, the line that went away, cancel, a fresh start
// on a newly opened port, and the return to idle after a request that could not be
// written. Which reply leads where is decided by the handshake, the replies and the
// transfers, along this map ("tick" is the session's once-a-second timer):
//
//   port opened           -> TRY_CONNECT_TX_KIND
//   TRY_CONNECT_TX_KIND   -tick, "#kind"-->     TRY_CONNECT_RX_KIND
//   TRY_CONNECT_RX_KIND   -model reply-->       TRY_CONNECT_KIND_DONE
//   TRY_CONNECT_KIND_DONE -tick-->              TRY_CONNECT_TX_DETAIL
//   TRY_CONNECT_TX_DETAIL -tick, "#detail"-->   TRY_CONNECT_RX_DETAIL
//   TRY_CONNECT_RX_DETAIL -version reply-->     TRY_CONNECT_DETAIL_DONE
//   TRY_CONNECT_DETAIL_DONE -tick-->            TRY_CONNECT_TX_GSER
//   TRY_CONNECT_TX_GSER   -tick, "#gser"-->     TRY_CONNECT_RX_GSER
//   TRY_CONNECT_RX_GSER   -serial number-->     TRY_TX_VOICE_INDEX (listing) or CONNECTED_IDLE
//   TRY_TX_VOICE_INDEX    -tick, "vi"-->        RX_VOICE_INDEX
//   RX_VOICE_INDEX        -index with entries--> TRY_TX_LOG_HISTORY
//   TRY_TX_LOG_HISTORY    -tick, "lh"-->        RX_LOG_HISTORY
//   RX_LOG_HISTORY        -history, "lp" pages-> CONNECTED_IDLE
//   CONNECTED_IDLE        clip and dive downloads run here, selected by the receive type
//   CONNECTED_IDLE        -clip stalled, "#cdcwait"-> TRY_RX_VOICE_WAIT
//   TRY_RX_VOICE_WAIT     -pacing taken-->      TRY_TX_VOICE_RETRY, else CONNECTED_IDLE
//   TRY_TX_VOICE_RETRY    -tick, clip again-->  CONNECTED_IDLE
//   any state             -refusal, deadline, unplug, cancel in a handshake-> DISCONNECTED
//   DISCONNECTED          -Reconnect, "#kind"--> TRY_CONNECT_RX_KIND
class Transitions {
 public:
  explicit Transitions(SessionContext &context) : context_(context) {}

  // The one place the state changes; the phase the front ends see follows it.
  void enter(SessionStatus next);
  // Whether the device takes requests once it is idle: withdrawn while a transfer or an
  // exchange runs, offered again when it has ended.
  void offerRequests(bool offered);
  // The phase the front ends see, worked out from the protocol state alone.
  DevicePhase devicePhase() const;
  // Publishes the phase again, after a change that enter() does not see (the listing's
  // sequence starting or ending).
  void publishPhase();

  // Sets state and selector, then sends command as the start of an exchange. On a failed
  // write the user is told "Corvamund power is off" (through the operation under way, if
  // any) and, unless told otherwise, the index sequence is dropped; the state stays as
  // set, and the operation under way ends.
  bool request(int32_t status, int32_t selector, const QString &command,
               bool dropSequenceOnFailure = true);
  // The same, keeping the state and the selector.
  bool request(const QString &command, bool dropSequenceOnFailure = true);

  // "#cdcwait" with the wait of the current level: the device keeps that pacing, and its
  // answer brings the session back to idle (or to the clip's retry).
  void requestCdcwait();

  // Whether the state is waiting for a reply that the deadline watches. Clip bytes are
  // watched by the link supervision instead.
  bool awaitingReply() const;
  // Once a second: ends an exchange whose reply is overdue.
  void checkDeadline();
  // The line is quiet and no reply is still due: a new exchange may start.
  bool lineQuiet() const;

  // A byte arrived (receive thread).
  void byteReceived();
  // The port's read failed for good: the cable was pulled or the line hung up.
  void lineLost();
  // A request put off until the line was quiet found the port gone: it is not made. At
  // idle it ends as a request that could not be sent ends, the controls back for the next
  // try, but said as what it is: the operation waiting on it ends as unplugged, and never
  // in a box saying the power is off. A loss already told is not told again.
  void portGoneBeforeRequest();
  // A port was opened: everything starts again as on the first plug-in.
  void freshStart();
  // Ends the operation under way at once, reported as cancelled; the session returns to
  // where the next one can start: disconnected during a handshake, otherwise idle. A clip
  // cut off mid-way is ended on the device's side with a "#cdcwait" exchange once the
  // line is quiet, as after a stall; the controls come back with its answer.
  void cancel();

  // Ends the operation under way with outcome, for the front end to show.
  void finish(Outcome outcome);
  // Keeps outcome until the session is idle again: a clip is saved before the pacing
  // exchange that follows it ends.
  void finishWhenIdle(Outcome outcome);
  // The session is idle again: ends the operation with the outcome kept for it, or with
  // outcome when one is given.
  void idleAgain(std::optional<Outcome> outcome);

  // Ends the operation under way with failure, in state DISCONNECTED with requests
  // withdrawn but, unless told otherwise, Reconnect offered where a port is open. A failure
  // that no operation waits for goes to the front end as a box, if it has a sentence.
  static constexpr bool kNoReconnect = false;
  void disconnect(Failure failure, const QString &sentence, bool offerReconnect = true);

  int64_t now() const;

 private:
  void stopTransfers();
  // An exchange whose request was not sent at idle is over: nothing of it may linger, the
  // controls come back for the next try, and the operation waiting on it ends with failure;
  // with none waiting, boxWhenIdle says the sentence in a box.
  void endUnsentAtIdle(Failure failure, const QString &sentence, bool boxWhenIdle);

  SessionContext &context_;
  Guarded<std::optional<Outcome>> kept_;
  std::atomic<bool> offered_{false};
  std::atomic<bool> reconnectOffered_{false};
};
