#include "IndexListModel.h"

#include <QApplication>
#include <QFileInfo>
#include <QPalette>
#include <QStyle>

#include "Localization.h"

namespace {

int DetailColumns(const QList<QStringList> &details) {
  qsizetype columns = 0;
  for (const QStringList &row : details) columns = std::max(columns, row.size());
  return int(columns);
}

}  // namespace

bool IndexListModel::setRows(const Rows &rows) {
  const qsizetype kept = rows_.size();
  const int columns = DetailColumns(rows.details);
  // A listing under way adds rows at the end: those are inserted, so that the rows already
  // shown keep their marks, their pick and their measured columns.
  const bool grew = kept > 0 && rows.texts.size() > kept && rows.offDevice == offDevice_ &&
                    columns == detailColumns_ && rows.texts.first(kept) == rows_ &&
                    rows.details.mid(0, kept) == details_ && rows.notes.mid(0, kept) == notes_;
  if (grew) {
    beginInsertRows(QModelIndex(), int(kept), int(rows.texts.size()) - 1);
  } else {
    beginResetModel();
    savedPaths_.clear();
  }
  rows_ = rows.texts;
  details_ = rows.details;
  notes_ = rows.notes;
  detailColumns_ = columns;
  offDevice_ = rows.offDevice;
  if (grew) {
    endInsertRows();
  } else {
    endResetModel();
  }
  return grew;
}

void IndexListModel::setSaved(const QList<std::optional<QString>> &savedPaths) {
  savedPaths_ = savedPaths;
  if (savedMark_.isNull())
    savedMark_ = QApplication::style()->standardIcon(QStyle::SP_DialogApplyButton);
  if (!rows_.isEmpty())
    emit dataChanged(index(0, 0), index(int(rows_.size()) - 1, 0),
                     {Qt::DecorationRole, Qt::ToolTipRole});
}

QVariant IndexListModel::data(const QModelIndex &index, int role) const {
  if (index.row() < 0 || index.row() >= rows_.size()) return {};
  const std::optional<QString> saved = savedPaths_.value(index.row());
  const bool detail = index.column() > 0;
  switch (role) {
    case Qt::DisplayRole:
      return detail ? details_.value(index.row()).value(index.column() - 1) : rows_[index.row()];
    case Qt::TextAlignmentRole:
      return detail ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    case Qt::ForegroundRole:
      return offDevice_
                 ? QVariant(QApplication::palette().brush(QPalette::Disabled, QPalette::Text))
                 : QVariant();
    case Qt::DecorationRole:
      return saved && !detail ? QVariant(savedMark_) : QVariant();
    case Qt::ToolTipRole: {
      QStringList lines;
      if (!notes_.value(index.row()).isEmpty()) lines << notes_[index.row()];
      if (offDevice_) lines << Localized("row_not_on_device");
      if (index.row() < savedPaths_.size()) {  // else the library was not asked yet
        lines << (saved ? Localized("row_saved_as").arg(QFileInfo(*saved).fileName())
                        : Localized("row_not_saved"));
      }
      if (!clockNote_.isEmpty()) lines << clockNote_;
      return lines.isEmpty() ? QVariant() : QVariant(lines.join(u'\n'));
    }
    default:
      return {};
  }
}

Qt::ItemFlags IndexListModel::flags(const QModelIndex &index) const {
  return QAbstractTableModel::flags(index) & ~Qt::ItemIsEditable;
}
