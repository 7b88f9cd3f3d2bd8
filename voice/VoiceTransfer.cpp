#include "VoiceTransfer.h"

#include <QFileInfo>

#include "Commands.h"
#include "Localization.h"
#include "SaveResult.h"
#include "SystemLog.h"
#include "WaveFile.h"

VoiceTransfer::VoiceTransfer(Session &session, std::unique_ptr<SupervisionTimer> clipTimer)
    : session_(session), context_(session.context()), clip_(session, index_, std::move(clipTimer)) {
  context_.hooks.voiceIndex = [this](char *bytes, size_t length) { receiveIndex(bytes, length); };
}

VoiceTransfer::~VoiceTransfer() {
  // The receive thread must not run this handler any more.
  session_.closeSerialPort();
  context_.hooks.voiceIndex = nullptr;
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
    context_.clearClips();
    heldClips_ = hiddenShortClips_ = 0;
    const VoiceIndexState state = index_.get();
    const QStringList index = state.entries.value_or(QStringList());
    if (index.size() < 2) {
      SystemLog("g_voice_index.count < 2");
      return;
    }
    const VoiceList list = BuildVoiceList(index, context_.state.searchFromDate, state.ring);
    heldClips_ = list.held;
    hiddenShortClips_ = list.tooShort;
    QList<ClipRow> clips;
    for (qsizetype row = 0; row < list.lines.size(); ++row) {
      const int32_t number = list.numbers.value(row);
      const QString &entry = index.value(number);
      clips.append({number, list.lines[row], VoiceRecordingTime(entry),
                    VoiceMinutes(entry, state.ring), GetVoiceDataSize(entry, state.ring)});
    }
    context_.model.update([&clips](DeviceState &published) { published.clips = clips; });
    // A new list is shown with its first row picked.
    if (!clips.isEmpty()) SystemLog("UpdateVoiceIndex:comboBox_voice_index=%ld", 0L);
  });
}

QString VoiceTransfer::entryText(int32_t entry) const {
  return index_.get().entries.value_or(QStringList()).value(entry);
}
