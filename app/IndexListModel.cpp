#include "IndexListModel.h"

#include <QApplication>
#include <QFileInfo>
#include <QStyle>

#include "Localization.h"

void IndexListModel::setRows(const QStringList &rows) {
  beginResetModel();
  rows_ = rows;
  savedPaths_.clear();
  endResetModel();
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
  switch (role) {
    case Qt::DisplayRole:
      return rows_[index.row()];
    case Qt::DecorationRole:
      return saved ? QVariant(savedMark_) : QVariant();
    case Qt::ToolTipRole:
      if (index.row() >= savedPaths_.size()) return {};  // the library was not asked yet
      return saved ? Localized("row_saved_as").arg(QFileInfo(*saved).fileName())
                   : Localized("row_not_saved");
    default:
      return {};
  }
}

Qt::ItemFlags IndexListModel::flags(const QModelIndex &index) const {
  return QAbstractTableModel::flags(index) & ~Qt::ItemIsEditable;
}
