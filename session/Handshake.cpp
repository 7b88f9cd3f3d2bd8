#include "Handshake.h"

#include "Commands.h"
#include "SessionContext.h"
#include "SystemLog.h"

void Handshake::tick() {
  SessionState &state = context_.state;
  Transitions &transitions = context_.transitions;
  switch (state.phase.load()) {
    case TRY_CONNECT_TX_KIND:
      if (!context_.channel.isOpen() || !state.readThreadRunning) break;
      state.indexSequence = 1;
      transitions.request(TRY_CONNECT_RX_KIND, eSERIAL_RX_RESPONSE, Command::kKind);
      break;
    case TRY_CONNECT_KIND_DONE:
      // A whole tick between a reply and the next command gives the device time.
      transitions.enter(TRY_CONNECT_TX_DETAIL);
      break;
    case TRY_CONNECT_TX_DETAIL:
      transitions.request(TRY_CONNECT_RX_DETAIL, eSERIAL_RX_RESPONSE, Command::kDetail);
      break;
    case TRY_CONNECT_DETAIL_DONE:
      transitions.enter(TRY_CONNECT_TX_GSER);
      break;
    case TRY_CONNECT_TX_GSER:
      transitions.request(TRY_CONNECT_RX_GSER, eSERIAL_RX_RESPONSE, Command::kSerialNumber);
      break;
    case CONNECTED_IDLE:
      // The device's removal is noticed here only; during a handshake the failed read
      // of the receive thread tells.
      if (state.deviceExist == 0) {
        transitions.enter(DISCONNECTED);
        transitions.offerRequests(false);
        context_.operation.fail(Failure::Unplugged, QString());
      }
      break;
    case TRY_TX_VOICE_RETRY:
      transitions.enter(CONNECTED_IDLE);
      if (context_.hooks.downloadClip) context_.hooks.downloadClip();
      break;
    case TRY_TX_VOICE_INDEX:
      context_.clearClips();
      transitions.request(RX_VOICE_INDEX, eSERIAL_RX_VOICE_INDEX, Command::kVoiceIndex);
      break;
    case TRY_TX_LOG_HISTORY:
      state.pageReceived = 0;
      context_.clearDives();
      transitions.request(RX_LOG_HISTORY, eSERIAL_RX_LOG_HISTORY, Command::kLogHistory);
      break;
    default:
      break;  // the receive thread moves the other states on
  }
  transitions.checkDeadline();

  const bool clipUnderWay =
      state.clipDownloadActive == 1 && state.phase == CONNECTED_IDLE && state.deviceExist != 0;
  context_.model.update(
      [clipUnderWay](DeviceState &published) { published.clipUnderWay = clipUnderWay; });
}

void Handshake::reconnect() {
  if (!context_.channel.isOpen()) {
    SystemLog("Reconnect:serialFileDescriptor -1.");
    return;
  }
  SessionState &state = context_.state;
  state.indexSequence = 1;
  // A failed write is not reported here: the reply deadline tells.
  context_.transitions.enter(TRY_CONNECT_RX_KIND);
  state.receiveType = eSERIAL_RX_RESPONSE;
  context_.channel.discardInput();
  state.lastLineActivityMs = context_.clockMs();
  context_.channel.writeString(Command::kKind);
}
