#include "VoiceTransfer.h"

#include <QFileInfo>

#include "Localization.h"
#include "SystemLog.h"
#include "WaveFile.h"

VoiceTransfer::VoiceTransfer(Session &session) : session_(session), context_(session.context()) {
  SessionHooks &hooks = context_.hooks;
  hooks.voiceIndex = [this](char *bytes, size_t length) { receiveIndex(bytes, length); };
  hooks.voiceData = [this](char *bytes, size_t length) { receiveClip(bytes, length); };
  hooks.DownloadVoiceData = [this] { DownloadVoiceData(); };
  hooks.MakeWaveFile = [this] { MakeWaveFile(); };
  hooks.CloseVoiceBinary = [this] { CloseVoiceBinary(); };
}

VoiceTransfer::~VoiceTransfer() {
  // The receive thread must not run these handlers any more.
  session_.closeSerialPort();
  context_.hooks.voiceIndex = nullptr;
  context_.hooks.voiceData = nullptr;
  context_.hooks.DownloadVoiceData = nullptr;
  context_.hooks.MakeWaveFile = nullptr;
  context_.hooks.CloseVoiceBinary = nullptr;
}

void VoiceTransfer::receiveIndex(char *bytes, size_t length) {
  const std::optional<QByteArray> reply = voice_rx_buffer_.feed(bytes, length);
  if (!reply) return;
  const auto [update, entries] = g_voice_index_.with([&reply](VoiceIndexState &state) {
    const bool update = ApplyVoiceIndexReply(*reply, state);
    return std::pair(update, state.g_voice_index ? state.g_voice_index->size() : 0);
  });
  if (update) UpdateVoiceIndex();
  // The connection sequence goes on to the log history only after a readable index.
  if (entries > 0 && context_.state.g_read_index_sequence == 1) {
    context_.state.g_serial_port_status = TRY_TX_LOG_HISTORY;
  }
}

void VoiceTransfer::UpdateVoiceIndex() {
  mainThread_.post([this] {
    WindowOperations &window = context_.window;
    context_.clearList(IndexList::Voice);
    window.EnableButtonDownloadVoice(false);
    const VoiceIndexState state = g_voice_index_.get();
    const QStringList index = state.g_voice_index.value_or(QStringList());
    if (index.size() < 2) {
      SystemLog("g_voice_index.count < 2");
      return;
    }
    const VoiceList list =
        BuildVoiceList(index, context_.state.g_index_search_date, state.g_voice_data_block);
    context_.lists.items_voice_index = list.lines;
    context_.lists.items_voice_index_number = list.numbers;
    window.reloadList(IndexList::Voice, list.lines);
    if (list.lines.isEmpty()) return;
    window.EnableComboBoxVoiceIndex(true);
    window.selectRow(IndexList::Voice, 0);
    SystemLog("UpdateVoiceIndex:comboBox_voice_index=%ld",
              long(window.selectedRow(IndexList::Voice)));
  });
}

void VoiceTransfer::action_button_download_voice() {
  if (context_.state.g_serial_port_status != CONNECTED_IDLE) {
    context_.DisableButtonControl();
    return;
  }
  if (context_.CreateFolder()) DownloadVoiceData();
}

void VoiceTransfer::DownloadVoiceData() {
  SessionState &state = context_.state;
  WindowOperations &window = context_.window;
  const IndexLists &lists = context_.lists;
  const qsizetype count = lists.items_voice_index.size();
  const int row = window.selectedRow(IndexList::Voice);
  if (count == 0 || row < 0 || row >= count) return;
  const QString &sel = lists.items_voice_index[row];
  SystemLog("DownloadVoiceData:sel:%s,%lu", qUtf8Printable(sel), static_cast<unsigned long>(row));

  context_.DisableButtonControl();
  window.setEnabled(Outlet::button_reconnect, false);
  window.setEnabled(Outlet::comboBox_index_search_range, false);
  window.setVisible(Outlet::progressBar_cdc, true);
  // Set before the checks below: a refused request still leaves the receive loop taking
  // clip bytes.
  state.g_receive_data_type_is_voice_record = eSERIAL_RX_VOICE_DATA;
  if (state.g_voice_download_active) return;
  if (lists.items_voice_index_number.size() != count) {
    SystemLog("_comboBox_voice_index count different..index=%ld", long(row));
    return;
  }
  const int32_t idx = lists.items_voice_index_number[row];

  const VoiceIndexState index = g_voice_index_.get();
  const QString entry = index.g_voice_index.value_or(QStringList()).value(idx);
  const StoragePaths paths = state.paths.get();
  const std::optional<QString> name =
      MakeVoiceWaveFileName(entry, paths.g_voice_folder_path, index.g_voice_data_block);
  if (!name) {
    state.g_serial_port_status = DISCONNECTED;
    context_.DisableButtonControl();
    session_.Reconnect();
    SystemLog("g_saveWaveFilename nil!");
    return;
  }
  g_saveWaveFilename = *name;
  state.g_voice_data_size = GetVoiceDataSize(entry, index.g_voice_data_block);

  {
    std::lock_guard lock(fileMutex_);
    auto file = std::make_unique<QFile>(paths.g_temp_voice_file_path);
    if (file->exists() && !file->remove()) {
      SystemLog("file:%s removeError:%s", qUtf8Printable(paths.g_temp_voice_file_path),
                qUtf8Printable(file->errorString()));
    }
    if (!file->open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
      SystemLog("DownloadVoiceData Filename=%s filehandle is nil.",
                qUtf8Printable(paths.g_temp_voice_file_path));
      state.g_serial_port_status = DISCONNECTED;
      context_.DisableButtonControl();
      session_.Reconnect();
      return;
    }
    g_voice_file_handle = std::move(file);
  }
  state.g_voice_received_size = 0;
  state.g_voice_download_active = 1;
  state.g_voice_idle_ticks = 0;
  const unsigned long clip = static_cast<unsigned long>(idx - 1);
  QString command;
  if (state.g_flow_control_enabled == 1) {
    command = QString::asprintf("vh%02lu\r\n", clip);
    state.g_voice_unacked_size = 0;
  } else {
    command = QString::asprintf("vr%02lu\r\n", clip);
  }
  if (context_.sendCommand(command)) session_.timer1Start();
}

void VoiceTransfer::receiveClip(char *bytes, size_t length) {
  SessionState &state = context_.state;
  {
    std::lock_guard lock(fileMutex_);
    if (!g_voice_file_handle) return;
    if (g_voice_file_handle->write(bytes, qint64(length)) != qint64(length)) {
      // A full disk: the bytes are not counted, so the transfer ends as a failure rather
      // than as a clip with a hole in it.
      SystemLog("voice data write error:%s", qUtf8Printable(g_voice_file_handle->errorString()));
      return;
    }
  }
  const int32_t received = state.g_voice_received_size += int32_t(length);
  if (state.g_flow_control_enabled != 1) {
    SystemLog("%08d/%08d", received, state.g_voice_data_size.load());
  } else {
    int32_t unacked = state.g_voice_unacked_size += int32_t(length);
    SystemLog("%08d/%08d : %08d", received, state.g_voice_data_size.load(), unacked);
    for (; unacked >= kVoiceAcknowledgeBytes; unacked -= kVoiceAcknowledgeBytes) {
      state.g_voice_unacked_size -= kVoiceAcknowledgeBytes;
      context_.channel.writeString("vx\r\n");
    }
  }
  state.g_voice_idle_ticks = 0;
}

void VoiceTransfer::CloseVoiceBinary() {
  {
    std::lock_guard lock(fileMutex_);
    if (g_voice_file_handle) g_voice_file_handle->close();
    g_voice_file_handle.reset();
  }
  context_.state.g_voice_download_active = 0;
}

void VoiceTransfer::MakeWaveFile() {
  CloseVoiceBinary();
  Bin2wav8k(context_.state.paths.get().g_temp_voice_file_path, g_saveWaveFilename);
  const QString name = QFileInfo(g_saveWaveFilename).fileName();
  context_.window.messageBox(Localized("download_complete") +
                             (name.isEmpty() ? g_saveWaveFilename : name));
}
