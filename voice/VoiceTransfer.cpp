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
  hooks.downloadClip = [this] { downloadClip(); };
  hooks.makeWaveFile = [this] { return makeWaveFile(); };
  hooks.closeClipFile = [this] { closeClipFile(); };
}

VoiceTransfer::~VoiceTransfer() {
  // The receive thread must not run these handlers any more.
  session_.closeSerialPort();
  context_.hooks.voiceIndex = nullptr;
  context_.hooks.voiceData = nullptr;
  context_.hooks.downloadClip = nullptr;
  context_.hooks.makeWaveFile = nullptr;
  context_.hooks.closeClipFile = nullptr;
}

void VoiceTransfer::receiveIndex(char *bytes, size_t length) {
  const std::optional<QByteArray> reply = indexReply_.feed(bytes, length);
  if (!reply) return;
  const auto [update, entries] = index_.with([&reply](VoiceIndexState &state) {
    const bool update = ApplyVoiceIndexReply(*reply, state);
    return std::pair(update, state.entries ? state.entries->size() : 0);
  });
  if (update) rebuildVoiceList();
  // The connection sequence goes on to the log history only after a readable index.
  if (entries > 0 && context_.state.indexSequence == 1) {
    context_.transitions.enter(TRY_TX_LOG_HISTORY);
  }
}

void VoiceTransfer::rebuildVoiceList() {
  mainThread_.post([this] {
    WindowOperations &window = context_.window;
    context_.clearList(IndexList::Voice);
    window.EnableButtonDownloadVoice(false);
    heldClips_ = hiddenShortClips_ = 0;
    const VoiceIndexState state = index_.get();
    const QStringList index = state.entries.value_or(QStringList());
    if (index.size() < 2) {
      SystemLog("g_voice_index.count < 2");
      return;
    }
    const VoiceList list = BuildVoiceList(index, context_.state.searchFromDate, state.ring);
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
  if (context_.state.phase != CONNECTED_IDLE || context_.operation.active()) {
    refuse(Failure::Busy, Localized("device_busy"));
    return;
  }
  if (QString error; !context_.createFolders(&error)) {
    refuse(Failure::CannotMakeFolder, error);
    return;
  }
  context_.operation.begin(Operation::DownloadClip, std::move(done));
  entry_ = entry;
  context_.whenLineQuiet([this] { downloadClip(); });
}

void VoiceTransfer::downloadClip() {
  SessionState &state = context_.state;
  WindowOperations &window = context_.window;
  const IndexLists &lists = context_.lists;
  const int32_t entry = entry_;
  const qsizetype count = lists.items_voice_index.size();
  const qsizetype row = lists.items_voice_index_number.indexOf(entry);
  if (count == 0 || row < 0 || row >= count) {
    fail(Failure::NotOnDevice, Localized("item_not_on_device"));
    return;
  }
  const QString &sel = lists.items_voice_index[row];
  SystemLog("DownloadVoiceData:sel:%s,%lu", qUtf8Printable(sel), static_cast<unsigned long>(row));

  context_.disableControls();
  window.setEnabled(Outlet::button_reconnect, false);
  window.setEnabled(Outlet::comboBox_index_search_range, false);
  window.setVisible(Outlet::progressBar_cdc, true);
  // Set before the checks below: a refused request still leaves the receive loop taking
  // clip bytes.
  state.receiveType = eSERIAL_RX_VOICE_DATA;
  if (state.clipDownloadActive) return;

  const VoiceIndexState index = index_.get();
  const QString indexEntry = index.entries.value_or(QStringList()).value(entry);
  const StoragePaths paths = state.paths.get();
  const std::optional<QString> name =
      MakeVoiceWaveFileName(indexEntry, paths.voiceFolder, index.ring);
  if (!name) {
    fail(Failure::NotOnDevice, Localized("item_not_on_device"));
    session_.restartHandshake();
    SystemLog("g_saveWaveFilename nil!");
    return;
  }
  waveFileName_ = *name;
  state.clipSize = GetVoiceDataSize(indexEntry, index.ring);

  {
    std::lock_guard lock(fileMutex_);
    auto file = std::make_unique<QFile>(paths.clipInProgressFile);
    if (file->exists() && !file->remove()) {
      SystemLog("file:%s removeError:%s", qUtf8Printable(paths.clipInProgressFile),
                qUtf8Printable(file->errorString()));
    }
    if (!file->open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
      const SaveResult failure = SaveFailure(*file, errno);
      SystemLog("DownloadVoiceData Filename=%s filehandle is nil.",
                qUtf8Printable(paths.clipInProgressFile));
      fail(Failure::CannotSave,
           DescribeSaveFailure(failure, QFileInfo(paths.clipInProgressFile).fileName()));
      session_.restartHandshake();
      return;
    }
    clipFile_ = std::move(file);
  }
  state.clipReceived = 0;
  state.clipDownloadActive = 1;
  state.clipIdleTicks = 0;
  const bool paced = state.flowControl == 1;
  if (paced) state.clipUnacked = 0;
  if (context_.transitions.request(Command::Clip(paced, static_cast<unsigned long>(entry - 1)))) {
    session_.startWatching();
  }
}

void VoiceTransfer::fail(Failure failure, const QString &sentence) {
  context_.transitions.finish(Outcome{Operation::DownloadClip, failure, sentence, {}});
}

void VoiceTransfer::receiveClip(char *bytes, size_t length) {
  SessionState &state = context_.state;
  {
    std::lock_guard lock(fileMutex_);
    if (!clipFile_) return;
    if (clipFile_->write(bytes, qint64(length)) != qint64(length)) {
      // A full disk: the bytes are not counted, so the transfer ends as a failure rather
      // than as a clip with a hole in it.
      SystemLog("voice data write error:%s", qUtf8Printable(clipFile_->errorString()));
      return;
    }
  }
  const int32_t received = state.clipReceived += int32_t(length);
  if (state.flowControl != 1) {
    SystemLog("%08d/%08d", received, state.clipSize.load());
  } else {
    int32_t unacked = state.clipUnacked += int32_t(length);
    SystemLog("%08d/%08d : %08d", received, state.clipSize.load(), unacked);
    for (; unacked >= kVoiceAcknowledgeBytes; unacked -= kVoiceAcknowledgeBytes) {
      state.clipUnacked -= kVoiceAcknowledgeBytes;
      context_.channel.writeString(Command::kAcknowledge);
    }
  }
  state.clipIdleTicks = 0;
}

void VoiceTransfer::closeClipFile() {
  {
    std::lock_guard lock(fileMutex_);
    if (clipFile_) clipFile_->close();
    clipFile_.reset();
  }
  context_.state.clipDownloadActive = 0;
}

QString VoiceTransfer::entryText(int32_t entry) const {
  return index_.get().entries.value_or(QStringList()).value(entry);
}

Outcome VoiceTransfer::makeWaveFile() {
  closeClipFile();
  if (nameTakenByAnother) {
    const QString entry = entryText(entry_);
    waveFileName_ = DistinctWaveFileName(waveFileName_, [this, &entry](const QString &path) {
      return nameTakenByAnother(path, entry);
    });
  }
  const QString name = QFileInfo(waveFileName_).fileName();
  const QString shown = name.isEmpty() ? waveFileName_ : name;
  const SaveResult saved = Bin2wav8k(context_.state.paths.get().clipInProgressFile, waveFileName_);
  if (!saved.saved()) {
    return Outcome{
        Operation::DownloadClip, Failure::CannotSave, DescribeSaveFailure(saved, shown), {}};
  }
  return Outcome{Operation::DownloadClip, Failure::None, Localized("download_complete") + shown,
                 waveFileName_};
}
