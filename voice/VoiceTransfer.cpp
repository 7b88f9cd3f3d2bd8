#include "VoiceTransfer.h"

#include <QFileInfo>

#include "Commands.h"
#include "Localization.h"
#include "SaveResult.h"
#include "SystemLog.h"
#include "WaveFile.h"

VoiceTransfer::VoiceTransfer(Session &session) : session_(session), context_(session.context()) {
  SessionHooks &hooks = context_.hooks;
  hooks.voiceIndex = [this](char *bytes, size_t length) { receiveIndex(bytes, length); };
  hooks.voiceData = [this](char *bytes, size_t length) { receiveClip(bytes, length); };
  hooks.DownloadVoiceData = [this] { DownloadVoiceData(); };
  hooks.MakeWaveFile = [this] { return MakeWaveFile(); };
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
    context_.transitions.enter(TRY_TX_LOG_HISTORY);
  }
}

void VoiceTransfer::UpdateVoiceIndex() {
  mainThread_.post([this] {
    WindowOperations &window = context_.window;
    context_.clearList(IndexList::Voice);
    window.EnableButtonDownloadVoice(false);
    heldClips_ = hiddenShortClips_ = 0;
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
    heldClips_ = list.held;
    hiddenShortClips_ = list.tooShort;
    window.reloadList(IndexList::Voice, list.lines);
    if (list.lines.isEmpty()) return;
    window.EnableComboBoxVoiceIndex(true);
    window.selectRow(IndexList::Voice, 0);
    SystemLog("UpdateVoiceIndex:comboBox_voice_index=%ld",
              long(window.selectedRow(IndexList::Voice)));
  });
}

void VoiceTransfer::downloadClip(int32_t entry, OutcomeHandler done) {
  const auto refuse = [&done](Failure failure, const QString &sentence) {
    if (done) done(Outcome{Operation::DownloadClip, failure, sentence, {}});
  };
  if (context_.state.g_serial_port_status != CONNECTED_IDLE || context_.operation.active()) {
    refuse(Failure::Busy, Localized("device_busy"));
    return;
  }
  if (QString error; !context_.CreateFolder(&error)) {
    refuse(Failure::CannotMakeFolder, error);
    return;
  }
  context_.operation.begin(Operation::DownloadClip, std::move(done));
  g_entry_ = entry;
  context_.whenLineQuiet([this] { DownloadVoiceData(); });
}

void VoiceTransfer::DownloadVoiceData() {
  SessionState &state = context_.state;
  WindowOperations &window = context_.window;
  const IndexLists &lists = context_.lists;
  const int32_t entry = g_entry_;
  const qsizetype count = lists.items_voice_index.size();
  const qsizetype row = lists.items_voice_index_number.indexOf(entry);
  if (count == 0 || row < 0 || row >= count) {
    fail(Failure::NotOnDevice, Localized("item_not_on_device"));
    return;
  }
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

  const VoiceIndexState index = g_voice_index_.get();
  const QString indexEntry = index.g_voice_index.value_or(QStringList()).value(entry);
  const StoragePaths paths = state.paths.get();
  const std::optional<QString> name =
      MakeVoiceWaveFileName(indexEntry, paths.g_voice_folder_path, index.g_voice_data_block);
  if (!name) {
    fail(Failure::NotOnDevice, Localized("item_not_on_device"));
    session_.restartHandshake();
    SystemLog("g_saveWaveFilename nil!");
    return;
  }
  g_saveWaveFilename = *name;
  state.g_voice_data_size = GetVoiceDataSize(indexEntry, index.g_voice_data_block);

  {
    std::lock_guard lock(fileMutex_);
    auto file = std::make_unique<QFile>(paths.g_temp_voice_file_path);
    if (file->exists() && !file->remove()) {
      SystemLog("file:%s removeError:%s", qUtf8Printable(paths.g_temp_voice_file_path),
                qUtf8Printable(file->errorString()));
    }
    if (!file->open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
      const SaveResult failure = SaveFailure(*file, errno);
      SystemLog("DownloadVoiceData Filename=%s filehandle is nil.",
                qUtf8Printable(paths.g_temp_voice_file_path));
      fail(Failure::CannotSave,
           DescribeSaveFailure(failure, QFileInfo(paths.g_temp_voice_file_path).fileName()));
      session_.restartHandshake();
      return;
    }
    g_voice_file_handle = std::move(file);
  }
  state.g_voice_received_size = 0;
  state.g_voice_download_active = 1;
  state.g_voice_idle_ticks = 0;
  const bool paced = state.g_flow_control_enabled == 1;
  if (paced) state.g_voice_unacked_size = 0;
  if (context_.transitions.request(Command::Clip(paced, static_cast<unsigned long>(entry - 1)))) {
    session_.timer1Start();
  }
}

void VoiceTransfer::fail(Failure failure, const QString &sentence) {
  context_.transitions.finish(Outcome{Operation::DownloadClip, failure, sentence, {}});
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
      context_.channel.writeString(Command::kAcknowledge);
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

QString VoiceTransfer::entryText(int32_t entry) const {
  return g_voice_index_.get().g_voice_index.value_or(QStringList()).value(entry);
}

Outcome VoiceTransfer::MakeWaveFile() {
  CloseVoiceBinary();
  if (nameTakenByAnother) {
    const QString entry = entryText(g_entry_);
    g_saveWaveFilename = DistinctWaveFileName(
        g_saveWaveFilename,
        [this, &entry](const QString &path) { return nameTakenByAnother(path, entry); });
  }
  const QString name = QFileInfo(g_saveWaveFilename).fileName();
  const QString shown = name.isEmpty() ? g_saveWaveFilename : name;
  const SaveResult saved =
      Bin2wav8k(context_.state.paths.get().g_temp_voice_file_path, g_saveWaveFilename);
  if (!saved.saved()) {
    return Outcome{
        Operation::DownloadClip, Failure::CannotSave, DescribeSaveFailure(saved, shown), {}};
  }
  return Outcome{Operation::DownloadClip, Failure::None, Localized("download_complete") + shown,
                 g_saveWaveFilename};
}
