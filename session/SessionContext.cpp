#include "SessionContext.h"

#include <QMetaObject>

void SessionContext::DisableButtonControl() {
  const int32_t status = state.g_serial_port_status;
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

void SessionContext::EnableTransferControls() {
  window.setEnabled(Outlet::comboBox_index_search_range, true);
  window.setEnabled(Outlet::button_reconnect, true);
  window.EnableComboBoxVoiceIndex(true);
  window.EnableComboBoxLogIndex(true);
  window.EnableButtonDownloadVoice(true);
  window.EnableButtonDownloadLog(true);
}

bool SessionContext::sendCommand(const QString &command, bool dropSequenceOnFailure) {
  if (channel.writeString(command)) return true;
  window.messageBox(QString::fromLatin1(kPowerOffMessage));
  if (dropSequenceOnFailure) state.g_read_index_sequence = 0;
  return false;
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

bool SessionContext::CreateFolder() {
  StoragePaths paths = state.paths.get();
  const bool created = ::CreateFolder(paths, downloadsFolder(),
                                      [this](const QString &text) { window.messageBox(text); });
  state.paths.set(paths);
  return created;
}

void MainThreadQueue::post(std::function<void()> work) {
  {
    std::lock_guard lock(mutex_);
    pending_.push_back(std::move(work));
  }
  QMetaObject::invokeMethod(
      &anchor_, [this] { runPending(); }, Qt::QueuedConnection);
}

void MainThreadQueue::runPending() {
  std::deque<std::function<void()>> batch;
  {
    std::lock_guard lock(mutex_);
    batch.swap(pending_);
  }
  for (const std::function<void()> &work : batch) work();
}
