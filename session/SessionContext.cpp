#include "SessionContext.h"

#include <QMetaObject>
#include <QTimer>
#include <chrono>

void SessionContext::disableControls() {
  const int32_t status = state.phase;
  const bool offline = status == DISCONNECTED || status == TRY_CONNECT_TX_KIND;
  if (offline) {
    window.setText(Outlet::label_type, QString());
    window.setText(Outlet::label_version, QString());
    window.setText(Outlet::label_serial_number, QStringLiteral("SN."));
  }
  window.EnableComboBoxVoiceIndex(false);
  window.EnableComboBoxLogIndex(false);
  window.EnableButtonDownloadVoice(false);
  window.EnableButtonDownloadLog(false);
  if (offline) window.setEnabled(Outlet::button_reconnect, false);
}

void SessionContext::enableTransferControls() {
  window.setEnabled(Outlet::comboBox_index_search_range, true);
  window.setEnabled(Outlet::button_reconnect, true);
  window.EnableComboBoxVoiceIndex(true);
  window.EnableComboBoxLogIndex(true);
  window.EnableButtonDownloadVoice(true);
  window.EnableButtonDownloadLog(true);
}

void SessionContext::whenLineQuiet(std::function<void()> start) {
  pollQuiet(std::move(start), clockMs() + kReplyDeadlineMs);
}

void SessionContext::pollQuiet(std::function<void()> start, int64_t giveUpAt) {
  if (!channel.isOpen()) {  // unplugged or hung up while the request waited
    transitions.portGoneBeforeRequest();
    return;
  }
  if (transitions.lineQuiet() || clockMs() >= giveUpAt) {
    start();
    return;
  }
  QTimer::singleShot(kQuietLineMs / 4, &anchor_,
                     [this, start = std::move(start), giveUpAt]() mutable {
                       pollQuiet(std::move(start), giveUpAt);
                     });
}

int64_t SteadyClockMs() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

void SessionContext::clearList(IndexList list) {
  if (list == IndexList::Voice) {
    lists.items_voice_index.clear();
    lists.items_voice_index_number.clear();
  } else {
    lists.items_log_index.clear();
    lists.items_log_index_number.clear();
  }
  window.reloadList(list, {});
}

bool SessionContext::createFolders(QString *error) {
  StoragePaths paths = state.paths.get();
  const bool created = ::CreateFolder(paths, downloadsFolder(), [this, error](const QString &text) {
    if (error) {
      *error = text;
    } else {
      window.messageBox(text);
    }
  });
  state.paths.set(paths);
  return created;
}
