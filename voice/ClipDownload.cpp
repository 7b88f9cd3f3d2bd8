#include "ClipDownload.h"

#include <QFileInfo>
#include <algorithm>

#include "Commands.h"
#include "Localization.h"
#include "SaveResult.h"
#include "SystemLog.h"
#include "TextValues.h"
#include "WaveFile.h"

ClipDownload::ClipDownload(Session &session, const Guarded<VoiceIndexState> &index,
                           std::unique_ptr<SupervisionTimer> timer)
    : session_(session), context_(session.context()), index_(index), timer_(std::move(timer)) {
  SessionHooks &hooks = context_.hooks;
  hooks.voiceData = [this](char *bytes, size_t length) { receiveClip(bytes, length); };
  hooks.cdcwaitReply = [this](const char *text) { cdcwaitReply(text); };
  hooks.downloadClip = [this] { request(); };
  hooks.closeClipFile = [this] { closeClipFile(); };
}

ClipDownload::~ClipDownload() {
  // The receive thread must not run these handlers any more.
  session_.closeSerialPort();
  SessionHooks &hooks = context_.hooks;
  hooks.voiceData = nullptr;
  hooks.cdcwaitReply = nullptr;
  hooks.downloadClip = nullptr;
  hooks.closeClipFile = nullptr;
}

void ClipDownload::start(int32_t entry, OutcomeHandler done) {
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
  context_.whenLineQuiet([this] { request(); });
}

void ClipDownload::request() {
  SessionState &state = context_.state;
  const int32_t entry = entry_;
  const QList<ClipRow> clips = context_.model.state().clips;
  const qsizetype row = RowNumbers(clips).indexOf(entry);
  if (row < 0) {
    fail(Failure::NotOnDevice, Localized("item_not_on_device"));
    return;
  }
  SystemLog("DownloadVoiceData:sel:%s,%lu", qUtf8Printable(clips[row].text),
            static_cast<unsigned long>(row));

  context_.transitions.offerRequests(false);
  context_.model.update([entry](DeviceState &published) { published.progress = {entry, 0, 0}; });
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
    unwritten_.clear();
    writeFailed_ = false;
    state.clipReceived = 0;
  }
  state.clipDownloadActive = 1;
  state.clipIdleTicks = 0;
  const bool paced = state.flowControl == 1;
  if (paced) state.clipUnacked = 0;
  if (context_.transitions.request(Command::Clip(paced, static_cast<unsigned long>(entry - 1)))) {
    startWatching();
  }
}

void ClipDownload::fail(Failure failure, const QString &sentence) {
  context_.transitions.finish(Outcome{Operation::DownloadClip, failure, sentence, {}});
}

void ClipDownload::receiveClip(char *bytes, size_t length) {
  SessionState &state = context_.state;
  int32_t received = 0;
  {
    std::lock_guard lock(fileMutex_);
    if (!clipFile_) return;
    if (writeFailed_) {
      SystemLog("voice data write error:%s", qUtf8Printable(clipFile_->errorString()));
      return;
    }
    unwritten_.append(bytes, qsizetype(length));
    received = state.clipReceived += int32_t(length);
    if (unwritten_.size() >= kWriteChunkBytes) writeArrived();
    if (writeFailed_) return;
  }
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

void ClipDownload::writeArrived() {
  if (!clipFile_ || unwritten_.isEmpty() || writeFailed_) return;
  const qint64 written = clipFile_->write(unwritten_);
  if (written != unwritten_.size()) {
    // A full disk: the bytes that did not reach the file are not counted, nor is anything
    // after them, so the transfer ends as a failure rather than as a clip with a hole in it.
    SystemLog("voice data write error:%s", qUtf8Printable(clipFile_->errorString()));
    context_.state.clipReceived -= int32_t(unwritten_.size() - std::max<qint64>(written, 0));
    writeFailed_ = true;
  }
  unwritten_.clear();
}

int64_t ClipDownload::receivedInFile() {
  std::lock_guard lock(fileMutex_);
  writeArrived();
  return context_.state.clipReceived;
}

void ClipDownload::closeClipFile() {
  {
    std::lock_guard lock(fileMutex_);
    writeArrived();
    if (clipFile_) clipFile_->close();
    clipFile_.reset();
  }
  context_.state.clipDownloadActive = 0;
}

Outcome ClipDownload::makeWaveFile() {
  closeClipFile();
  if (nameTakenByAnother) {
    const QString entry = index_.get().entries.value_or(QStringList()).value(entry_);
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

void ClipDownload::startWatching() {
  SystemLog("timer1Start");
  timer_->start([this] { watchTick(); });
}

void ClipDownload::giveUp(Failure failure, const char *key) {
  context_.state.clipRetries = 0;
  closeClipFile();
  context_.transitions.offerRequests(true);
  context_.transitions.finish(Outcome{Operation::DownloadClip, failure, Localized(key), {}});
}

void ClipDownload::watchTick() {
  SessionState &state = context_.state;
  if (state.receiveType != eSERIAL_RX_VOICE_DATA) return;
  const int64_t expected = state.clipSize;
  const int64_t received = receivedInFile();
  context_.model.update([entry = entry_, received, expected](DeviceState &published) {
    published.progress = {entry, received, expected};
  });

  if (received == expected) {
    timer_->invalidate();
    Outcome saved = makeWaveFile();
    if (state.clipRetries == 0 && state.cdcwaitLevel >= 1) {
      // A clean clip: ask for a shorter wait; the controls come back with the answer, and
      // the clip's outcome with them.
      --state.cdcwaitLevel;
      context_.transitions.finishWhenIdle(std::move(saved));
      context_.transitions.requestCdcwait();
      return;
    }
    state.clipRetries = 0;
    context_.transitions.offerRequests(true);
    context_.transitions.finish(std::move(saved));
    return;
  }

  // A stall is declared on the 51st tick without new bytes, about 5.1 s after the last.
  if (state.clipIdleTicks.fetch_add(1) < kVoiceStallTicks) return;
  timer_->invalidate();
  if (expected - received > kVoiceRetryableShortfall) {
    giveUp(Failure::Stalled, "recive_fail");
    return;
  }
  // A short tail missing, or more bytes than announced: fetch the clip again with a
  // longer wait, at most twice.
  closeClipFile();
  if (state.clipRetries >= kVoiceMaxRetries) {
    giveUp(Failure::RetriesExhausted, "retry_recive_fail");
    return;
  }
  ++state.clipRetries;
  if (state.cdcwaitLevel < kHighestCdcwaitLevel) ++state.cdcwaitLevel;
  context_.transitions.requestCdcwait();
}

void ClipDownload::cdcwaitReply(const char *text) {
  if (std::strstr(text, "cdcwait") == nullptr) return;
  const QStringList values =
      SplitAtBlanks(DecodeUtf8Strict(QByteArrayView(text, qsizetype(std::strlen(text)))));
  if (values.size() < 3 || values[0] != u"cdcwait" || values[1] != u"=") return;
  SessionState &state = context_.state;
  const int32_t level = state.cdcwaitLevel;
  const bool matches = level >= 0 && level <= kHighestCdcwaitLevel &&
                       IntValue(values[2]) == CDCWAIT_LEVELS[size_t(level)];
  if (matches && state.clipRetries >= 1) {
    // The device took the new pacing: the next session tick fetches the clip again.
    context_.transitions.enter(TRY_TX_VOICE_RETRY);
    return;
  }
  const bool abandoned = state.clipRetries >= 1;
  context_.transitions.enter(CONNECTED_IDLE);
  context_.transitions.offerRequests(true);
  // A clip whose retry the device did not take is dropped without a word to the window;
  // the command line still learns that it failed.
  context_.transitions.idleAgain(
      abandoned ? std::optional(Outcome{Operation::DownloadClip, Failure::Abandoned, QString(), {}})
                : std::nullopt);
}
