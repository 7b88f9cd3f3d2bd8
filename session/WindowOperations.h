#pragma once

#include <QString>
#include <QStringList>

// The controls of the window that the session changes, named as in the window's layout.
enum class Outlet {
  label_type,
  label_version,
  label_serial_number,
  label_poweron_message,
  label_com_number,
  label_recorded_voice,
  label_dive_log,
  pictureBox_set_corvamund2,
  comboBox_index_search_range,
  button_reconnect,
  progressBar_cdc,
};

// "label_type" for Outlet::label_type: the control's object name in the window.
const char *OutletName(Outlet outlet);

enum class IndexList { Voice, Log };

// Everything the session, voice and log parts show the user goes through here. The window
// implements it with widgets, the command-line front end on a terminal, tests with a
// recording fake. Any call may come from any thread: an implementation hops to its main
// thread itself, asynchronously, and keeps the order of the calls. The list queries
// (selectedRow) are made on the main thread only.
class WindowOperations {
 public:
  virtual ~WindowOperations() = default;

  // A modal information box titled "MrvTq5dk" with one "OK" button.
  virtual void messageBox(const QString &text) = 0;

  virtual void setText(Outlet outlet, const QString &text) = 0;
  virtual void setVisible(Outlet outlet, bool visible) = 0;
  virtual void setEnabled(Outlet outlet, bool enabled) = 0;
  virtual void setProgress(int percent) = 0;  // progressBar_cdc, 0..100

  // The voice list, enabled or not. Enabling shows tableView_voice_index and
  // label_voice_index if hidden and enables view_voice_index; with no rows the view is
  // disabled again; with a row selected the caption shows its line and is brought to the
  // front. Disabling disables the view and empties the caption.
  virtual void EnableComboBoxVoiceIndex(bool enable) = 0;
  // Shows button_download_voice if hidden (when enabling), then sets it enabled or not.
  // It is enabled even with an empty list.
  virtual void EnableButtonDownloadVoice(bool enable) = 0;
  // The log list; the same rules as the voice list with tableView_log_index,
  // view_log_index and label_log_index.
  virtual void EnableComboBoxLogIndex(bool enable) = 0;
  // Shows button_download_log if hidden (when enabling; disabling never hides it), then
  // sets it enabled or not.
  virtual void EnableButtonDownloadLog(bool enable) = 0;

  // The rows of a list changed; the view reloads them.
  virtual void reloadList(IndexList list, const QStringList &rows) = 0;
  // Selects a row, replacing any selection; the caption shows it.
  virtual void selectRow(IndexList list, int row) = 0;
  // The selected row, -1 for none. Main thread only.
  virtual int selectedRow(IndexList list) const = 0;

  // Whether a voice download is under way on a connected device, for the quit guard.
  virtual void setIsProcessing(bool processing) = 0;
};
