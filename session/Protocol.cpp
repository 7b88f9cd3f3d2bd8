#include "Protocol.h"

const char *SessionStatusName(int32_t status) {
  switch (status) {
    case TRY_CONNECT_TX_KIND:
      return "TRY_CONNECT_TX_KIND";
    case TRY_CONNECT_RX_KIND:
      return "TRY_CONNECT_RX_KIND";
    case TRY_CONNECT_KIND_DONE:
      return "TRY_CONNECT_KIND_DONE";
    case TRY_CONNECT_TX_DETAIL:
      return "TRY_CONNECT_TX_DETAIL";
    case TRY_CONNECT_RX_DETAIL:
      return "TRY_CONNECT_RX_DETAIL";
    case TRY_CONNECT_DETAIL_DONE:
      return "TRY_CONNECT_DETAIL_DONE";
    case TRY_CONNECT_TX_GSER:
      return "TRY_CONNECT_TX_GSER";
    case TRY_CONNECT_RX_GSER:
      return "TRY_CONNECT_RX_GSER";
    case CONNECTED_IDLE:
      return "CONNECTED_IDLE";
    case TRY_RX_VOICE_WAIT:
      return "TRY_RX_VOICE_WAIT";
    case TRY_TX_VOICE_RETRY:
      return "TRY_TX_VOICE_RETRY";
    case TRY_TX_VOICE_INDEX:
      return "TRY_TX_VOICE_INDEX";
    case RX_VOICE_INDEX:
      return "RX_VOICE_INDEX";
    case TRY_TX_LOG_HISTORY:
      return "TRY_TX_LOG_HISTORY";
    case RX_LOG_HISTORY:
      return "RX_LOG_HISTORY";
    case RX_ERASE_ALL_RECORDED_VOICE:
      return "RX_ERASE_ALL_RECORDED_VOICE";
    case RX_CLEAR_LOG_HISTORY:
      return "RX_CLEAR_LOG_HISTORY";
    case DISCONNECTED:
      return "DISCONNECTED";
    default:
      return "";
  }
}
