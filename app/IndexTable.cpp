#include "IndexTable.h"

#include <QEvent>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QTableView>
#include <algorithm>

#include "SystemLog.h"

IndexTable::IndexTable(QWidget *frame, QTableView *view, QLabel *caption, const char *name,
                       const QString &headerName, QObject *parent)
    : QObject(parent),
      frame_(frame),
      view_(view),
      caption_(caption),
      model_(new IndexListModel(this)),
      name_(name) {
  view_->setModel(model_);
  view_->setShowGrid(false);
  view_->verticalHeader()->hide();
  QHeaderView *header = view_->horizontalHeader();
  header->setMinimumHeight(28);
  // However small the window, the picked row is seen among a few of its neighbours.
  constexpr int kRowsInView = 4;
  view_->setMinimumHeight(std::max(header->minimumHeight(), header->sizeHint().height()) +
                          kRowsInView * view_->verticalHeader()->defaultSectionSize() +
                          2 * view_->frameWidth());
  header->setObjectName(headerName);
  header->setSectionResizeMode(QHeaderView::ResizeToContents);
  // The picked row repeated in the header, set apart as a caption rather than a row.
  caption_->setContentsMargins(8, 0, 8, 0);
  caption_->setStyleSheet(QStringLiteral(
      "QLabel { background: palette(mid); color: palette(bright-text); font-weight: 600; }"));
  caption_->setParent(header);
  caption_->setGeometry(header->rect());
  caption_->setAutoFillBackground(true);
  header->installEventFilter(this);
  connect(view_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
          [this] { pickChanged(); });
}

void IndexTable::reveal() {
  frame_->show();
  caption_->show();
}

void IndexTable::conceal() {
  caption_->setText(QString());
  caption_->hide();
  frame_->hide();
}

bool IndexTable::revealed() const {
  return !frame_->isHidden();
}

void IndexTable::setRows(const IndexListModel::Rows &rows) {
  const int row = picked();
  QSignalBlocker quiet(view_->selectionModel());
  if (model_->setRows(rows)) return;  // the rows shown, their pick and caption stay
  const bool offDevice = rows.offDevice;
  // The row's text takes the room the further columns leave.
  if (model_->columnCount() > 0)
    view_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
  if (!offDevice && row >= 0 && row < rows.texts.size()) {
    view_->selectRow(row);
    // The row's text may have changed (another clock); a blank caption stays blank.
    if (!caption_->text().isEmpty()) caption_->setText(captionFor(row));
  } else {
    caption_->setText(QString());
  }
}

void IndexTable::pick(int row) {
  view_->selectRow(row);
}

int IndexTable::picked() const {
  const QList<int> rows = pickedRows();
  return rows.isEmpty() ? -1 : rows.first();
}

QList<int> IndexTable::pickedRows() const {
  QList<int> rows;
  for (const QModelIndex &index : view_->selectionModel()->selectedRows()) rows.append(index.row());
  std::sort(rows.begin(), rows.end());
  return rows;
}

void IndexTable::offer(bool offered) {
  view_->setEnabled(offered && !model_->rows().isEmpty());
  const int row = picked();
  if (!offered || row < 0 || row >= model_->rows().size()) {
    if (!offered) caption_->setText(QString());
    return;
  }
  caption_->setText(captionFor(row));
  caption_->raise();
}

void IndexTable::pickChanged() {
  const int row = picked();
  caption_->setText(row < 0 ? QString() : captionFor(row));
  SystemLog("SelectionDidChange:%s=%ld", name_, long(row));
  if (onPick) onPick(row);
}

QString IndexTable::captionFor(int row) const {
  const QString text = model_->rows().value(row);
  if (text.isEmpty() || clockName_.isEmpty()) return text;
  return QStringLiteral("%1   (%2)").arg(text, clockName_);
}

bool IndexTable::eventFilter(QObject *watched, QEvent *event) {
  if (event->type() == QEvent::Resize && watched == view_->horizontalHeader())
    caption_->setGeometry(view_->horizontalHeader()->rect());
  return QObject::eventFilter(watched, event);
}
