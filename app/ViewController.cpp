#include "ViewController.h"

#include <QCloseEvent>
#include <QHeaderView>
#include <QMessageBox>
#include <QPushButton>
#include <QThread>

#include "Commands.h"
#include "DevicePicture.h"
#include "Localization.h"
#include "SystemLog.h"
#include "ui_ViewController.h"

namespace {

constexpr int kSearchRanges = 6;

}  // namespace

ViewController::ViewController(std::unique_ptr<DeviceRegistry> registry, QWidget *parent)
    : QWidget(parent),
      ui_(std::make_unique<Ui::ViewController>()),
      session_(*this),
      voice_(session_),
      logs_(session_),
      discovery_(&session_, std::move(registry)) {
  ui_->setupUi(this);
  voiceTable_ = {ui_->tableView_voice_index, ui_->view_voice_index, ui_->label_voice_index,
                 new IndexListModel(this), "view_voice_index"};
  logTable_ = {ui_->tableView_log_index, ui_->view_log_index, ui_->label_log_index,
               new IndexListModel(this), "view_log_index"};
  for (IndexTable *t : {&voiceTable_, &logTable_}) {
    t->view->setModel(t->model);
    t->view->horizontalHeader()->setStretchLastSection(true);
    t->view->horizontalHeader()->setMinimumHeight(28);
    t->view->verticalHeader()->hide();
    t->view->horizontalHeader()->setObjectName(t == &voiceTable_
                                                   ? QStringLiteral("headerView_voice_index")
                                                   : QStringLiteral("headerView_log_index"));
    t->caption->setContentsMargins(8, 0, 8, 0);
  }
  ui_->pictureBox_set_corvamund2->setPixmap(DevicePicture(180));
  ui_->progressBar_cdc->setRange(0, 100);
  setWindowTitle(QStringLiteral("Mrvtq5dk"));
  timer2_.setInterval(1000);
  connect(&timer2_, &QTimer::timeout, this, [this] { session_.timer2Call(); });
  session_.setConnectionHandler([this](const Outcome &outcome) { showOutcome(outcome); });
}

ViewController::~ViewController() {
  if (initDevice_.joinable()) initDevice_.join();
}

void ViewController::viewDidLoad() {
  SessionState &state = session_.state();
  state.initialRunning = true;
  state.deviceExist = 0;
  session_.context().DisableButtonControl();
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
  logs_.SetIndexSearchDatatime();

  for (IndexTable *t : {&voiceTable_, &logTable_}) {
    t->caption->setText(QString());
    t->caption->hide();
    t->container->hide();
  }
  connect(ui_->comboBox_index_search_range, &QComboBox::currentIndexChanged, this,
          [this] { comboBoxSelectionDidChange(); });
  for (IndexList list : {IndexList::Voice, IndexList::Log}) {
    connect(table(list).view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this, list] { tableViewSelectionDidChange(list); });
  }
  connect(ui_->button_reconnect, &QPushButton::clicked, this,
          [this] { action_button_reconnect(); });
  connect(ui_->button_download_voice, &QPushButton::clicked, this,
          [this] { action_button_download_voice(); });
  connect(ui_->button_download_log, &QPushButton::clicked, this,
          [this] { action_button_download_log(); });

  // The selection captions live in the tables' header views.
  for (IndexTable *t : {&voiceTable_, &logTable_}) {
    QHeaderView *header = t->view->horizontalHeader();
    t->caption->setParent(header);
    t->caption->setGeometry(header->rect());
    t->caption->setAutoFillBackground(true);
    header->installEventFilter(this);
  }

  if (!session_.context().CreateFolder()) std::exit(1);  // the folder box has been shown
  timer2_.start();
  InitDevice();
  SystemLog("viewDidLoad end..");
}

void ViewController::InitDevice() {
  initDevice_ = std::thread([this] { discovery_.InitDevice(); });
}

void ViewController::viewDidAppear() {
  if (initDevice_.joinable()) initDevice_.join();
  if (session_.state().deviceExist == 0) return;
  messageBox(Localized("corvamund_already_exist"));
  std::exit(1);
}

bool ViewController::windowShouldClose() const {
  const SessionState &state = session_.state();
  return !(state.g_voice_download_active && state.g_serial_port_status == CONNECTED_IDLE &&
           state.deviceExist != 0);
}

void ViewController::closeEvent(QCloseEvent *event) {
  if (windowShouldClose()) {
    event->accept();
  } else {
    event->ignore();
  }
}

bool ViewController::eventFilter(QObject *watched, QEvent *event) {
  if (event->type() == QEvent::Resize) {
    for (IndexTable *t : {&voiceTable_, &logTable_}) {
      if (watched == t->view->horizontalHeader())
        t->caption->setGeometry(t->view->horizontalHeader()->rect());
    }
  }
  return QWidget::eventFilter(watched, event);
}

bool ViewController::onMainThread(std::function<void()> work) {
  if (QThread::currentThread() == thread()) {
    work();
    return true;
  }
  mainThread_.post(std::move(work));
  return false;
}

QWidget *ViewController::outlet(Outlet outlet) const {
  return findChild<QWidget *>(QString::fromLatin1(OutletName(outlet)));
}

void ViewController::messageBox(const QString &text) {
  onMainThread([this, text] {
    QMessageBox box(QMessageBox::Information, QStringLiteral("MrvTq5dk"), text, QMessageBox::Ok,
                    this);
    box.setObjectName(QStringLiteral("messageBox"));
    box.exec();
  });
}

long ViewController::confirmBox(const QString &text) {
  QMessageBox box(QMessageBox::Question, QStringLiteral("Mrvtq5dk"), text, QMessageBox::NoButton,
                  this);
  box.setObjectName(QStringLiteral("confirmBox"));
  QPushButton *ok = box.addButton(QStringLiteral("OK"), QMessageBox::AcceptRole);
  box.addButton(Localized("Cancel"), QMessageBox::RejectRole);
  box.exec();
  return box.clickedButton() == ok ? 1000 : 1001;
}

void ViewController::setText(Outlet which, const QString &text) {
  onMainThread([this, which, text] {
    if (auto *label = qobject_cast<QLabel *>(outlet(which))) label->setText(text);
  });
}

void ViewController::setVisible(Outlet which, bool visible) {
  onMainThread([this, which, visible] { outlet(which)->setVisible(visible); });
}

void ViewController::setEnabled(Outlet which, bool enabled) {
  onMainThread([this, which, enabled] { outlet(which)->setEnabled(enabled); });
}

void ViewController::setProgress(int percent) {
  onMainThread([this, percent] { ui_->progressBar_cdc->setValue(percent); });
}

void ViewController::showCaption(IndexTable &t) {
  const int row = selectedRow(&t == &voiceTable_ ? IndexList::Voice : IndexList::Log);
  if (row < 0 || row >= t.model->rows().size()) return;
  t.caption->setText(t.model->rows().value(row));
  t.caption->raise();
}

void ViewController::enableIndexTable(IndexList list, bool enable) {
  IndexTable &t = table(list);
  if (enable && t.container->isHidden()) {
    t.container->show();
    t.caption->show();
  }
  t.view->setEnabled(enable);
  if (!enable) {
    t.caption->setText(QString());
    return;
  }
  if (t.model->rows().isEmpty()) {
    t.view->setEnabled(false);
    return;
  }
  showCaption(t);
}

void ViewController::EnableComboBoxVoiceIndex(bool enable) {
  if (!onMainThread([this, enable] { enableIndexTable(IndexList::Voice, enable); })) {
    onMainThread([this] {
      SystemLog("EnableComboBoxVoiceIndex(Thread):comboBox_voice_index=%ld",
                long(selectedRow(IndexList::Voice)));
    });
  }
}

void ViewController::EnableComboBoxLogIndex(bool enable) {
  onMainThread([this, enable] { enableIndexTable(IndexList::Log, enable); });
}

void ViewController::EnableButtonDownloadVoice(bool enable) {
  onMainThread([this, enable] {
    if (enable && ui_->button_download_voice->isHidden()) ui_->button_download_voice->show();
    ui_->button_download_voice->setEnabled(enable);
  });
}

void ViewController::EnableButtonDownloadLog(bool enable) {
  onMainThread([this, enable] {
    if (enable && ui_->button_download_log->isHidden()) ui_->button_download_log->show();
    ui_->button_download_log->setEnabled(enable);
  });
}

void ViewController::reloadList(IndexList list, const QStringList &rows) {
  onMainThread([this, list, rows] {
    // A reload keeps the selection, as long as the row is still there.
    IndexTable &t = table(list);
    const int row = selectedRow(list);
    QSignalBlocker quiet(t.view->selectionModel());
    t.model->setRows(rows);
    if (row >= 0 && row < rows.size()) t.view->selectRow(row);
  });
}

void ViewController::selectRow(IndexList list, int row) {
  onMainThread([this, list, row] { table(list).view->selectRow(row); });
}

int ViewController::selectedRow(IndexList list) const {
  const QModelIndexList rows = table(list).view->selectionModel()->selectedRows();
  return rows.isEmpty() ? -1 : rows.first().row();
}

QString ViewController::searchRangeText() const {
  return ui_->comboBox_index_search_range->currentText();
}

void ViewController::setIsProcessing(bool processing) {
  if (isProcessingChanged) isProcessingChanged(processing);
}

void ViewController::tableViewSelectionDidChange(IndexList list) {
  IndexTable &t = table(list);
  const int row = selectedRow(list);
  t.caption->setText(row < 0 ? QString() : t.model->rows().value(row));
  SystemLog("SelectionDidChange:%s=%ld", t.name, long(row));
}

void ViewController::comboBoxSelectionDidChange() {
  SessionState &state = session_.state();
  SessionContext &context = session_.context();
  if (state.g_serial_port_status != CONNECTED_IDLE ||
      !context.operation.begin(Operation::ConnectAndList,
                               [this](const Outcome &outcome) { showOutcome(outcome); })) {
    logs_.SetIndexSearchDatatime();
    return;
  }
  ui_->comboBox_index_search_range->setEnabled(false);
  ui_->button_reconnect->setEnabled(false);
  logs_.SetIndexSearchDatatime();
  state.g_read_index_sequence = 1;
  context.clearList(IndexList::Voice);
  context.clearList(IndexList::Log);
  context.DisableButtonControl();
  context.transitions.request(CONNECTED_IDLE, eSERIAL_RX_VOICE_INDEX,
                              QString::fromLatin1(Command::kVoiceIndex));
}

void ViewController::action_button_reconnect() {
  session_.restartHandshake();
}

void ViewController::action_button_download_voice() {
  SessionContext &context = session_.context();
  if (session_.state().g_serial_port_status != CONNECTED_IDLE) {
    context.DisableButtonControl();
    return;
  }
  const IndexLists &lists = context.lists;
  const int row = selectedRow(IndexList::Voice);
  if (row < 0 || row >= lists.items_voice_index_number.size()) return;
  voice_.downloadClip(lists.items_voice_index_number[row],
                      [this](const Outcome &outcome) { showOutcome(outcome); });
}

void ViewController::action_button_download_log() {
  logs_.action_button_download_log([this](const Outcome &outcome) { showOutcome(outcome); });
}

void ViewController::showOutcome(const Outcome &outcome) {
  ui_->label_status->setText(outcome.sentence);
  if (outcome.sentence.isEmpty()) return;
  switch (outcome.failure) {
    case Failure::None:
      // A finished download is told in a box; a finished listing shows in the lists.
      if (outcome.operation != Operation::ConnectAndList) messageBox(outcome.sentence);
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
