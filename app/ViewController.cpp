#include "ViewController.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>

#include <pthread.h>

#include "DeviceControls.h"
#include "DevicePicture.h"
#include "DivePane.h"
#include "DiveRecord.h"
#include "ExportDialog.h"
#include "ListRows.h"
#include "Localization.h"
#include "LogIndex.h"
#include "PageDamage.h"
#include "PlayerBar.h"
#include "PreferencesDialog.h"
#include "SaveResult.h"
#include "SearchRange.h"
#include "SystemLog.h"
#include "VoiceIndex.h"
#include "ui_ViewController.h"

namespace {

constexpr int kSearchRanges = 6;

}  // namespace

ViewController::ViewController(std::unique_ptr<DeviceRegistry> registry, QWidget *parent)
    : QWidget(parent),
      ui_(std::make_unique<Ui::ViewController>()),
      discovery_(&stack_.session, std::move(registry)) {
  ui_->setupUi(this);
  jobPanel_ = std::make_unique<SaveJobPanel>(
      stack_.saveAll,
      SaveJobPanel::Controls{ui_->progressBar_job, ui_->label_job, ui_->button_cancel,
                             ui_->progressBar_cdc, ui_->label_status},
      this);
  // Clips and dives have folders of their own, side by side: the box opens the one above.
  jobPanel_->folder = [this] { return programFolder(); };
  jobPanel_->itemText = [this](const DeviceLibrary::Item &item) { return itemText(item); };
  clipTable_ =
      new IndexTable(ui_->tableView_voice_index, ui_->view_voice_index, ui_->label_voice_index,
                     "view_voice_index", QStringLiteral("headerView_voice_index"), this);
  diveTable_ = new IndexTable(ui_->tableView_log_index, ui_->view_log_index, ui_->label_log_index,
                              "view_log_index", QStringLiteral("headerView_log_index"), this);
  clipTable_->onPick = [this](int) { showSelectedClip(); };
  diveTable_->onPick = [this](int) { showSelectedDive(); };
  divePane_ = new DivePane(this);
  ui_->layout_dive->addWidget(divePane_);
  // The lists and the dive share the height; neither shrinks to nothing in a small window.
  ui_->layout_root->setStretchFactor(ui_->layout_lists, 1);
  ui_->layout_root->setStretchFactor(ui_->layout_dive, 1);
  deviceChooserLabel_ = new QLabel(this);
  deviceChooser_ = new QComboBox(this);
  deviceChooser_->setObjectName(QStringLiteral("comboBox_library_device"));
  ui_->layout_search->insertWidget(ui_->layout_search->indexOf(ui_->button_save_all_new),
                                   deviceChooserLabel_);
  ui_->layout_search->insertWidget(ui_->layout_search->indexOf(ui_->button_save_all_new),
                                   deviceChooser_);
  deviceChooserLabel_->hide();
  deviceChooser_->hide();
  connect(deviceChooser_, &QComboBox::activated, this, [this](int index) {
    if (shelf_ && index >= 0 && index < shelf_->shelf.devices.size())
      askShelf(shelf_->shelf.devices[index]);
  });
  chooseExportFile = [this](const QString &suggested) {
    return QFileDialog::getSaveFileName(
        this, Localized("button_export_logbook").remove(QStringLiteral("...")), suggested,
        Localized("export_file_filter"));
  };
  divePane_->pinClicked = [this](int pin) { playPinnedClip(pin); };
  ui_->pictureBox_set_corvamund2->setPixmap(DevicePicture(180));
  preferences_ = new QPushButton(this);
  preferences_->setObjectName(QStringLiteral("button_preferences"));
  ui_->layout_search->insertWidget(ui_->layout_search->indexOf(ui_->button_export_logbook),
                                   preferences_);
  connect(preferences_, &QPushButton::clicked, this, [this] { preferencesClicked(); });
  nameClock();
  ui_->progressBar_cdc->setRange(0, 100);
  setWindowTitle(QStringLiteral("Mrvtq5dk"));
  tickTimer_.setInterval(1000);
  connect(&tickTimer_, &QTimer::timeout, this, [this] { stack_.session.tick(); });
  phaseTimer_.setInterval(250);
  connect(&phaseTimer_, &QTimer::timeout, this, [this] { showPhase(); });
  stack_.session.setConnectionHandler([this](const Outcome &outcome) { showOutcome(outcome); });
  DeviceModel &model = stack_.session.model();
  connect(&model, &DeviceModel::changed, this, [this](const DeviceState &state) { render(state); });
  connect(&model, &DeviceModel::notice, this, [this](const QString &text) { messageBox(text); });
}

ViewController::~ViewController() {
  if (firstScan_.joinable()) firstScan_.join();
}

void ViewController::start() {
  SessionState &state = stack_.session.state();
  state.initialRunning = true;
  state.deviceExist = 0;
  ui_->label_type->setText(QString());
  ui_->label_version->setText(QString());
  ui_->label_serial_number->setText(QStringLiteral("SN."));
  ui_->label_com_number->setText(Localized("Disconnect"));
  ui_->label_poweron_message->setText(Localized("label_poweron_message"));
  ui_->button_reconnect->setText(Localized("button_reconnect"));
  ui_->label_index_search_range->setText(Localized("label_index_search_range"));
  ui_->label_recorded_voice->setText(Localized("label_recorded_voice"));
  ui_->button_download_voice->setText(Localized("button_download_voice"));
  ui_->label_dive_log->setText(Localized("label_dive_log"));
  ui_->button_download_log->setText(Localized("button_download_log"));
  ui_->button_save_all_new->setText(Localized("button_save_all_new"));
  ui_->button_export_logbook->setText(Localized("button_export_logbook"));
  preferences_->setText(Localized("button_preferences"));
  ui_->button_save_all_new->hide();
  deviceChooserLabel_->setText(Localized("library_device"));
  ui_->label_voice_counts->clear();
  ui_->label_log_counts->clear();

  ui_->pictureBox_set_corvamund2->show();
  ui_->label_poweron_message->show();
  for (QWidget *hidden : {static_cast<QWidget *>(ui_->label_recorded_voice),
                          static_cast<QWidget *>(ui_->comboBox_voice_index),
                          static_cast<QWidget *>(ui_->button_download_voice),
                          static_cast<QWidget *>(ui_->label_dive_log),
                          static_cast<QWidget *>(ui_->comboBox_log_index),
                          static_cast<QWidget *>(ui_->button_download_log),
                          static_cast<QWidget *>(ui_->progressBar_cdc)}) {
    hidden->hide();
  }

  ui_->comboBox_index_search_range->clear();
  for (int i = 0; i < kSearchRanges; ++i) {
    ui_->comboBox_index_search_range->addItem(
        Localized(QStringLiteral("comboBox_index_search_range%1").arg(i).toLatin1().constData()));
  }
  ui_->comboBox_index_search_range->setCurrentIndex(0);
  stack_.logs.setSearchRange(chosenRangeMonths());

  for (IndexTable *table : {clipTable_, diveTable_}) table->conceal();
  connect(ui_->comboBox_index_search_range, &QComboBox::currentIndexChanged, this,
          [this] { rangeChanged(); });
  connect(ui_->button_reconnect, &QPushButton::clicked, this, [this] { reconnectClicked(); });
  connect(ui_->button_download_voice, &QPushButton::clicked, this,
          [this] { downloadClipClicked(); });
  connect(ui_->button_download_log, &QPushButton::clicked, this, [this] { downloadDiveClicked(); });
  connect(ui_->button_save_all_new, &QPushButton::clicked, this, [this] { saveAllNewClicked(); });
  connect(ui_->button_export_logbook, &QPushButton::clicked, this,
          [this] { exportLogbookClicked(); });

  offerControls(shown_);
  if (!stack_.session.context().createFolders()) std::exit(1);  // the folder box has been shown
  tickTimer_.start();
  phaseTimer_.start();
  startDiscovery();
  SystemLog("viewDidLoad end..");
}

void ViewController::startDiscovery() {
  firstScan_ = std::thread([this] { discovery_.startDiscovery(); });
#if defined(__linux__)
  // Named before start-up is logged as over, so that "top -H", a debugger and the tests can
  // tell whether the devices attached at start are still being counted.
  pthread_setname_np(firstScan_.native_handle(), kFirstScanThreadName);
#endif
}

void ViewController::afterShown() {
  if (firstScan_.joinable()) firstScan_.join();
  if (stack_.session.state().deviceExist != 0) {
    messageBox(Localized("corvamund_already_exist"));
    std::exit(1);
  }
  // A library that could not be read was set aside: the diver hears it once.
  if (!stack_.library.notice().isEmpty()) {
    ui_->label_status->setText(stack_.library.notice());
    messageBox(stack_.library.notice());
  }
  if (stack_.session.state().phase == DISCONNECTED) {
    shelfLooked_ = true;
    askShelf();
  }
}

bool ViewController::mayClose() const {
  const SessionState &state = stack_.session.state();
  return !(state.clipDownloadActive && state.phase == CONNECTED_IDLE && state.deviceExist != 0);
}

void ViewController::closeEvent(QCloseEvent *event) {
  if (mayClose()) {
    event->accept();
  } else {
    event->ignore();
  }
}

void ViewController::changeEvent(QEvent *event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::ActivationChange && isActiveWindow() &&
      stack_.session.state().phase == CONNECTED_IDLE && !jobPanel_->running() &&
      !stack_.session.context().operation.active())
    refreshLibraryView();
}

void ViewController::messageBox(const QString &text) {
  QMessageBox box(QMessageBox::Information, QStringLiteral("MrvTq5dk"), text, QMessageBox::Ok,
                  this);
  box.setObjectName(QStringLiteral("messageBox"));
  box.exec();
}

void ViewController::render(const DeviceState &state) {
  const DeviceState before = std::exchange(shown_, state);
  // A device that went away is not shown as if it were there; one that stopped answering is.
  const DeviceIdentity identity =
      state.phase == DevicePhase::Absent ? DeviceIdentity{} : state.identity;
  ui_->label_type->setText(identity.model);
  ui_->label_version->setText(identity.versionText);
  ui_->label_serial_number->setText(QStringLiteral("SN.") + identity.serialNumber);
  if (state.portOpenFailed) {
    ui_->label_poweron_message->setText(Localized("initial_error"));
  } else if (state.phase != DevicePhase::Absent && before.phase == DevicePhase::Absent) {
    ui_->label_poweron_message->setText(Localized("open_serial_port"));
  }
  // Once a device has answered, the plug-in instruction gives way to the lists for good.
  const bool answering = state.phase != DevicePhase::Absent && state.phase != DevicePhase::Opening;
  if (answering && !ui_->label_poweron_message->isHidden()) {
    ui_->label_poweron_message->hide();
    ui_->pictureBox_set_corvamund2->hide();
    for (IndexTable *table : {clipTable_, diveTable_}) {
      if (table->revealed()) continue;
      // A list's title comes with its (empty, grey) table, so the title never floats alone.
      table->offer(false);
      table->reveal();
    }
    ui_->label_recorded_voice->show();
    ui_->label_dive_log->show();
  }
  if (answering) ui_->label_com_number->hide();
  if (state.phase == DevicePhase::Absent && before.phase != DevicePhase::Absent)
    ui_->label_com_number->show();
  showLists(state, before);
  offerControls(state);
  ui_->progressBar_cdc->setValue(state.progress.percent());
  if (fetchingPin_ && state.operation == Operation::DownloadClip)
    divePane_->player().showFetch(ClipRowText(lists().pinnedClip(*fetchingPin_).row, clock_),
                                  state.progress.percent());
  if (state.clipUnderWay != before.clipUnderWay && clipUnderWayChanged)
    clipUnderWayChanged(state.clipUnderWay);
}

void ViewController::showLists(const DeviceState &state, const DeviceState &before) {
  // The device's own rows take the lists back from the library's.
  if ((state.clips != before.clips || state.dives != before.dives) && lists().fromLibrary())
    putShelfAway();
  if (state.clips != before.clips) {
    showClipRows(state.clips, false);
    if (state.clips.isEmpty()) ui_->label_voice_counts->clear();
    // A new clip list is shown with its first row picked.
    if (!state.clips.isEmpty()) clipTable_->pick(0);
  }
  if (state.dives != before.dives) {
    showDiveRows(state.dives, false);
    if (state.dives.isEmpty()) ui_->label_log_counts->clear();
    // The first dive is picked as it comes; later rows keep the pick.
    if (before.dives.isEmpty() && !state.dives.isEmpty()) diveTable_->pick(0);
  }
}

void ViewController::showClipRows(const QList<ClipRow> &clips, bool offDevice) {
  IndexListModel::Rows rows;
  rows.offDevice = offDevice;
  for (const ClipRow &clip : clips) rows.texts.append(ClipRowText(clip, clock_));
  clipTable_->setRows(rows);
}

void ViewController::showDiveRows(const QList<DiveRow> &dives, bool offDevice) {
  IndexListModel::Rows rows;
  rows.offDevice = offDevice;
  for (const DiveRow &dive : dives) {
    rows.texts.append(DiveRowText(dive, clock_));
    rows.details.append(DiveRowDetails(dive));
    rows.notes.append(dive.damage ? DamageText(*dive.damage) : QString());
  }
  diveTable_->setRows(rows);
}

void ViewController::nameClock() {
  for (IndexTable *table : {clipTable_, diveTable_}) {
    table->setClockName(ClockName(clock_));
    table->model().setClockNote(Localized("row_clock").arg(ClockName(clock_)));
  }
}

void ViewController::preferencesClicked() {
  const std::optional<ShownClock> chosen = AskShownClock(this, clock_);
  if (!chosen || *chosen == clock_) return;
  SetChosenClock(*chosen);
  clock_ = *chosen;
  nameClock();
  // The same rows and picks, on the other clock.
  const QList<int> clips = clipTable_->pickedRows(), dives = diveTable_->pickedRows();
  if (shelf_) {
    showShelf(shelf_->shelf);
  } else {
    showClipRows(shown_.clips, false);
    showDiveRows(shown_.dives, false);
    if (shown_.phase == DevicePhase::Idle) refreshLibraryView();
  }
  for (int row : clips) clipTable_->pick(row);
  for (int row : dives) diveTable_->pick(row);
  showSelectedDive();
  showSelectedClip();
}

void ViewController::offerControls(const DeviceState &state) {
  const DeviceControls offered = ControlsFor(state.phase, state.heldDives > 0);
  const bool job = jobPanel_->running();
  ui_->comboBox_index_search_range->setEnabled(offered.range && !job);
  ui_->button_reconnect->setEnabled(offered.reconnect && !job);
  offerList(*clipTable_, offered.clipList);
  offerList(*diveTable_, offered.diveList);
  // A download button shows the first time it is offered, and stays.
  if (offered.clipDownload) ui_->button_download_voice->show();
  ui_->button_download_voice->setEnabled(offered.clipDownload && !job);
  if (offered.diveDownload && ui_->button_download_log->isHidden()) {
    ui_->button_download_log->show();
    ui_->button_save_all_new->show();
  }
  ui_->button_download_log->setEnabled(offered.diveDownload && !job);
  updateSaveAllButton();
  // While a job runs its one bar stands for every item.
  ui_->progressBar_cdc->setVisible(state.operation == Operation::DownloadClip && !job &&
                                   !fetchingPin_);
}

void ViewController::offerList(IndexTable &table, bool offered) {
  if (lists().fromLibrary()) return;  // the session speaks of the device's lists, not the library's
  if (offered && !table.revealed()) table.reveal();
  table.offer(offered && !jobPanel_->running());
}

int ViewController::chosenRangeMonths() const {
  const int index = ui_->comboBox_index_search_range->currentIndex();
  return index >= 0 && index < int(kSearchRangeMonths.size()) ? kSearchRangeMonths[index] : 0;
}

ListSource &ViewController::lists() {
  if (shelf_) return *shelf_;
  return deviceLists_;
}

void ViewController::showSelectedDive() {
  divePane_->showDive(lists().dive(diveTable_->picked()), lists().pins(), clock_);
}

void ViewController::showSelectedClip() {
  const int row = clipTable_->picked();
  const PlayableClip clip = lists().clip(row);
  divePane_->player().setClip(clip.file, row < 0 ? QString() : ClipRowText(clip.row, clock_));
}

bool ViewController::play(const PlayableClip &clip) {
  if (!clip.file) return false;
  divePane_->player().setClip(clip.file, ClipRowText(clip.row, clock_));
  divePane_->player().player().play(*clip.file);
  return true;
}

void ViewController::playPinnedClip(int pin) {
  const PlayableClip clip = lists().pinnedClip(pin);
  // The list picks the pin's clip, when it lists it, so that the list and the player agree.
  const QList<ClipRow> rows = lists().clipRows();
  for (int row = 0; row < rows.size(); ++row) {
    if (rows[row].start == clip.row.start) clipTable_->pick(row);
  }
  if (play(clip)) return;
  const std::optional<DeviceLibrary::Item> item = lists().fetchable(pin);
  if (!item || shown_.phase != DevicePhase::Idle || jobPanel_->running()) return;
  // Fetched with its progress in the player, which plays it when it is saved: no box.
  fetchingPin_ = pin;
  stack_.deviceLibrary.save(*item, [this, pin](const Outcome &outcome) {
    fetchingPin_.reset();
    if (!outcome.ok()) return showOutcome(outcome);
    ui_->progressBar_cdc->hide();
    refreshLibraryView();
    play(lists().pinnedClip(pin));
  });
}

void ViewController::rangeChanged() {
  if (lists().fromLibrary()) {
    // No device: the period filters the library's lists, and is kept for the next listing.
    // The session is not asked to list: the lists of a device gone would push the shelf away.
    stack_.logs.setSearchRange(chosenRangeMonths());
    askShelf(lists().device());
    return;
  }
  stack_.list(chosenRangeMonths(), [this](const Outcome &outcome) { showOutcome(outcome); });
}

void ViewController::reconnectClicked() {
  stack_.session.restartHandshake();
}

void ViewController::downloadClipClicked() {
  if (stack_.session.state().phase != CONNECTED_IDLE) return;
  if (const QList<DeviceLibrary::Item> items = selectedItems(ItemKind::Clip); items.size() > 1) {
    runJob([this, items](std::function<void()> ended) { jobPanel_->save(items, ended); });
    return;
  }
  const int row = clipTable_->picked();
  if (row < 0 || row >= shown_.clips.size()) return;
  stack_.downloadClip(shown_.clips[row].number,
                      [this](const Outcome &outcome) { showOutcome(outcome); });
}

void ViewController::downloadDiveClicked() {
  if (stack_.session.state().phase != CONNECTED_IDLE) return;
  if (const QList<DeviceLibrary::Item> items = selectedItems(ItemKind::Dive); items.size() > 1) {
    runJob([this, items](std::function<void()> ended) { jobPanel_->save(items, ended); });
    return;
  }
  // The picked dive, or the first when none is picked (which picks it); one dive is asked
  // of the device again, as it always was.
  const QList<DiveRow> &dives = shown_.dives;
  const long count = long(dives.size());
  if (count > 0 && diveTable_->picked() < 0) diveTable_->pick(0);
  const long row = diveTable_->picked();
  if (count == 0 || row < 0) return;
  if (row >= count) {
    SystemLog("action_button_download_log:error:count=%ld,sel=%ld", count, row);
    return;
  }
  if (dives[row].text.isEmpty()) {
    SystemLog("action_button_download_log:sdtring error:count=%ld,sel=%ld", count, row);
    return;
  }
  // A damaged page is saved all the same when asked for alone, as the device gave it.
  if (dives[row].damage) messageBox(DamagedPageSaved(*dives[row].damage));
  stack_.downloadDive(dives[row].number, [this](const Outcome &outcome) { showOutcome(outcome); });
}

void ViewController::saveAllNewClicked() {
  if (stack_.session.state().phase != CONNECTED_IDLE) return;
  runJob([this](std::function<void()> ended) { jobPanel_->saveAllNew(ended); });
}

void ViewController::exportLogbookClicked() {
  // The device on show: the one plugged in, the library's one on the lists, else the last seen.
  const QList<DeviceKey> devices = stack_.library.devices();
  const bool shown = lists().fromLibrary() || stack_.session.state().phase == CONNECTED_IDLE;
  const DeviceKey device = shown ? lists().device() : devices.value(0, DeviceKey{});
  const QList<int32_t> listed = lists().diveNumbers();
  QList<int32_t> selected;
  for (int row : diveTable_->pickedRows())
    if (row < listed.size()) selected.append(listed[row]);

  const std::optional<LogbookExportRequest> request =
      AskLogbookExport(this, device, selected, programFolder(), chooseExportFile);
  if (!request) return;
  // Without a library there is nothing to read, and its notice says why.
  if (!stack_.library.isOpen()) return exportEnded(stack_.library.notice());
  ui_->button_export_logbook->setEnabled(false);
  ui_->label_status->setText(Localized("status_exporting"));
  reader_.read<QString>(
      this,
      [request = *request](const Library &library) {
        return ExportLogbook(library, request).sentence;
      },
      [this](const QString &said) { exportEnded(said); });
}

void ViewController::exportEnded(const QString &said) {
  ui_->button_export_logbook->setEnabled(true);
  ui_->label_status->setText(said);
  messageBox(said);
}

QString ViewController::programFolder() const {
  return QFileInfo(stack_.session.state().paths.get().voiceFolder).absolutePath();
}

void ViewController::runJob(const std::function<void(std::function<void()> ended)> &start) {
  if (jobPanel_->running()) return;
  start([this] { jobEnded(); });
  offerControls(shown_);
}

void ViewController::jobEnded() {
  refreshLibraryView();
  offerControls(shown_);
}

QString ViewController::itemText(const DeviceLibrary::Item &item) const {
  if (item.kind == ItemKind::Dive) {
    for (const DiveRow &dive : shown_.dives)
      if (dive.number == item.number) return DiveRowText(dive, clock_);
  } else {
    for (const ClipRow &clip : shown_.clips)
      if (clip.number == item.number) return ClipRowText(clip, clock_);
  }
  return item.name;
}

QList<DeviceLibrary::Item> ViewController::selectedItems(ItemKind kind) {
  const bool clips = kind == ItemKind::Clip;
  const QList<int32_t> numbers = clips ? RowNumbers(shown_.clips) : RowNumbers(shown_.dives);
  QList<DeviceLibrary::Item> items;
  for (int row : (clips ? clipTable_ : diveTable_)->pickedRows()) {
    if (row < numbers.size()) items.append(stack_.deviceLibrary.item(kind, numbers[row]));
  }
  return items;
}

void ViewController::refreshLibraryView() {
  // The library's shelf counts its own rows; a device gone has nothing listed to count.
  if (shelf_ || shown_.phase == DevicePhase::Absent) return;
  const QList<DeviceLibrary::Item> items = stack_.deviceLibrary.listed();
  QList<std::optional<QString>> dives, clips;
  int newDives = 0, newClips = 0;  // a damaged page is never new: Save all new leaves it
  for (const DeviceLibrary::Item &item : items) {
    const bool dive = item.kind == ItemKind::Dive;
    (dive ? dives : clips).append(item.savedPath);
    if (!item.savedPath && !item.damaged) ++(dive ? newDives : newClips);
  }
  diveTable_->setSaved(dives);
  clipTable_->setSaved(clips);
  newItems_ = newDives + newClips;
  const int heldDives = std::max(0, shown_.heldDives);
  ui_->label_log_counts->setText(
      Localized("list_counts").arg(dives.size()).arg(heldDives).arg(newDives));
  const int hidden = stack_.voice.hiddenShortClips();
  const QString clipCounts =
      (hidden > 0 ? Localized("list_counts_short_hidden") : Localized("list_counts"))
          .arg(clips.size())
          .arg(stack_.voice.heldClips())
          .arg(newClips);
  ui_->label_voice_counts->setText(hidden > 0 ? clipCounts.arg(hidden) : clipCounts);
  updateSaveAllButton();
  // Play follows the picked clip's file: one just saved can be played at once.
  if (lists().clip(clipTable_->picked()).file != divePane_->player().clip()) showSelectedClip();
}

void ViewController::showPhase() {
  if (shown_.phase == DevicePhase::Absent) {
    // Once the device has gone, its lists give way to what the library kept of it; one that
    // stopped answering keeps its own, greyed, with Reconnect.
    if (!shelfLooked_ && !jobPanel_->running()) {
      shelfLooked_ = true;
      askShelf();
    }
    return;
  }
  QString text;
  switch (shown_.phase) {
    case DevicePhase::Opening:
    case DevicePhase::Identifying:
      text = Localized("status_connecting");
      break;
    case DevicePhase::Listing: {
      const Progress &dives = shown_.progress;
      text = dives.bytesTotal > 0 && shown_.heldDives > 0
                 ? Localized("status_reading_dive")
                       .arg(std::clamp(dives.item, 1, shown_.heldDives))
                       .arg(shown_.heldDives)
                 : Localized("status_reading_voice");
      break;
    }
    default:
      break;  // the operations say how they ended
  }
  shelfLooked_ = false;
  ++shelfAsked_;  // a shelf on its way stays away from the device's lists
  if (lists().fromLibrary()) putShelfAway();
  if (!text.isEmpty() && ui_->label_status->text() != text) ui_->label_status->setText(text);
}

void ViewController::askShelf(const std::optional<DeviceKey> &device) {
  if (!stack_.library.isOpen()) return;
  const int asked = ++shelfAsked_;
  const int32_t fromDay = SearchDateBound(chosenRangeMonths(), stack_.logs.today());
  reader_.read<std::optional<LibraryShelf>>(
      this,
      [device, fromDay](const Library &library) { return ReadShelf(library, device, fromDay); },
      [this, asked](const std::optional<LibraryShelf> &shelf) {
        if (shelf && asked == shelfAsked_) showShelf(*shelf);
      });
}

void ViewController::showShelf(LibraryShelf read) {
  shelf_ = std::make_unique<ShelfListSource>(std::move(read));
  const LibraryShelf &shelf = shelf_->shelf;
  const QList<DeviceKey> &devices = shelf.devices;
  deviceChooser_->clear();
  for (const DeviceKey &key : devices) deviceChooser_->addItem(ShelfDeviceName(key));
  deviceChooser_->setCurrentIndex(int(devices.indexOf(shelf.device)));
  deviceChooserLabel_->setVisible(devices.size() > 1);
  deviceChooser_->setVisible(devices.size() > 1);
  QList<std::optional<QString>> clipFiles;
  for (const QString &file : shelf.clipFiles) clipFiles.append(file);
  // The lists take the picture's height; the plug-in instruction stays above them.
  ui_->pictureBox_set_corvamund2->hide();
  showClipRows(shelf.clips, true);
  showDiveRows(shelf.diveRows, true);
  clipTable_->setSaved(clipFiles);
  diveTable_->setSaved(shelf.diveFiles);
  for (IndexTable *table : {clipTable_, diveTable_}) {
    table->reveal();
    table->offer(table->model().rowCount() > 0);
  }
  ui_->label_recorded_voice->show();
  ui_->label_dive_log->show();
  ui_->label_voice_counts->setText(
      Localized("shelf_counts").arg(shelf.clips.size()).arg(shelf.heldClips));
  ui_->label_log_counts->setText(
      Localized("shelf_counts").arg(shelf.diveRows.size()).arg(shelf.heldDives));
  ui_->label_status->setText(
      Localized("status_browsing_library").arg(ShelfDeviceName(shelf.device)));
  showSelectedDive();
  showSelectedClip();
}

void ViewController::putShelfAway() {
  shelf_.reset();
  deviceChooserLabel_->hide();
  deviceChooser_->hide();
  for (IndexTable *table : {clipTable_, diveTable_}) {
    table->setRows(IndexListModel::Rows());
    table->offer(false);
  }
  ui_->label_voice_counts->clear();
  ui_->label_log_counts->clear();
  ui_->label_status->clear();
  showSelectedDive();
  divePane_->player().setClip(std::nullopt, QString());
}

void ViewController::updateSaveAllButton() {
  ui_->button_save_all_new->setEnabled(shown_.phase == DevicePhase::Idle &&
                                       ui_->button_download_log->isEnabled() &&
                                       !jobPanel_->running() && newItems_ > 0);
}

void ViewController::showOutcome(const Outcome &outcome) {
  if (outcome.operation == Operation::DownloadClip) ui_->progressBar_cdc->hide();
  if (!jobPanel_->running()) refreshLibraryView();
  ui_->label_status->setText(outcome.sentence);
  if (outcome.sentence.isEmpty()) return;
  switch (outcome.failure) {
    case Failure::None:
      // A finished download is told in a box, with the folder the file went to; a finished
      // listing shows in the lists.
      if (outcome.operation != Operation::ConnectAndList) {
        QString text = outcome.sentence;
        if (const QString folder = DescribeSaveFolders({outcome.path}); !folder.isEmpty())
          text += (text.endsWith(u'\n') ? QString() : QStringLiteral("\n")) + folder;
        messageBox(text);
      }
      return;
    case Failure::Unplugged:
    case Failure::IdentityRefused:
    case Failure::Abandoned:
    case Failure::Cancelled:
    case Failure::Busy:
    case Failure::NotOnDevice:
      return;  // the status line says it; the lists and controls show the rest
    default:
      messageBox(outcome.sentence);
  }
}
