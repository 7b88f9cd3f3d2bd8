#include "Handshake.h"

#include "SessionContext.h"
#include "SystemLog.h"

void Handshake::timer2Call() {
  SessionState &state = context_.state;
  WindowOperations &window = context_.window;
  const char *command = nullptr;
  switch (state.g_serial_port_status.load()) {
    case TRY_CONNECT_TX_KIND:
      if (!context_.channel.isOpen() || !state.readThreadRunning) break;
      window.setVisible(Outlet::label_poweron_message, false);
      window.setVisible(Outlet::pictureBox_set_corvamund2, false);
      window.setVisible(Outlet::label_recorded_voice, true);
      window.setVisible(Outlet::label_dive_log, true);
      window.setEnabled(Outlet::comboBox_index_search_range, false);
      window.setVisible(Outlet::label_com_number, false);
      state.g_serial_port_status = TRY_CONNECT_RX_KIND;
      state.g_receive_data_type_is_voice_record = eSERIAL_RX_RESPONSE;
      state.g_read_index_sequence = 1;
      command = "#kind\r\n";
      break;
    case TRY_CONNECT_KIND_DONE:
      // A whole tick between a reply and the next command gives the device time.
      state.g_serial_port_status = TRY_CONNECT_TX_DETAIL;
      break;
    case TRY_CONNECT_TX_DETAIL:
      state.g_serial_port_status = TRY_CONNECT_RX_DETAIL;
      command = "#detail\r\n";
      break;
    case TRY_CONNECT_DETAIL_DONE:
      state.g_serial_port_status = TRY_CONNECT_TX_GSER;
      break;
    case TRY_CONNECT_TX_GSER:
      state.g_serial_port_status = TRY_CONNECT_RX_GSER;
      command = "#gser\r\n";
      break;
    case CONNECTED_IDLE:
      // The device's removal is noticed here only; during a handshake the failed read
      // of the receive thread tells.
      if (state.deviceExist == 0) {
        window.setVisible(Outlet::label_com_number, true);
        state.g_serial_port_status = DISCONNECTED;
        context_.DisableButtonControl();
      }
      break;
    case TRY_TX_VOICE_RETRY:
      state.g_serial_port_status = CONNECTED_IDLE;
      if (context_.hooks.DownloadVoiceData) context_.hooks.DownloadVoiceData();
      break;
    case TRY_TX_VOICE_INDEX:
      state.g_serial_port_status = RX_VOICE_INDEX;
      state.g_receive_data_type_is_voice_record = eSERIAL_RX_VOICE_INDEX;
      context_.clearList(IndexList::Voice);
      command = "vi\r\n";
      break;
    case TRY_TX_LOG_HISTORY:
      state.g_serial_port_status = RX_LOG_HISTORY;
      state.g_receive_data_type_is_voice_record = eSERIAL_RX_LOG_HISTORY;
      state.g_dive_log_received = 0;
      context_.clearList(IndexList::Log);
      command = "lh\r\n";
      break;
    default:
      break;  // the receive thread moves the other states on
  }
  if (command != nullptr) context_.sendCommand(QString::fromLatin1(command));

  window.setIsProcessing(state.g_voice_download_active == 1 &&
                         state.g_serial_port_status == CONNECTED_IDLE && state.deviceExist != 0);
}

void Handshake::Reconnect() {
  if (!context_.channel.isOpen()) {
    SystemLog("Reconnect:serialFileDescriptor -1.");
    return;
  }
  SessionState &state = context_.state;
  state.g_serial_port_status = TRY_CONNECT_RX_KIND;
  state.g_receive_data_type_is_voice_record = eSERIAL_RX_RESPONSE;
  state.g_read_index_sequence = 1;
  context_.channel.writeString("#kind\r\n");
}
