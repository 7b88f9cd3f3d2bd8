#include "IndexListModel.h"

void IndexListModel::setRows(const QStringList &rows) {
  beginResetModel();
  rows_ = rows;
  endResetModel();
}

QVariant IndexListModel::data(const QModelIndex &index, int role) const {
  if (role != Qt::DisplayRole || index.row() < 0 || index.row() >= rows_.size()) return {};
  return rows_[index.row()];
}

Qt::ItemFlags IndexListModel::flags(const QModelIndex &index) const {
  return QAbstractTableModel::flags(index) & ~Qt::ItemIsEditable;
}
