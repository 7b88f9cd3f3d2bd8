#pragma once

#include <QAbstractTableModel>
#include <QStringList>

// The rows of an index table: one column, the row's text in every cell, never editable.
class IndexListModel : public QAbstractTableModel {
 public:
  using QAbstractTableModel::QAbstractTableModel;

  void setRows(const QStringList &rows);
  const QStringList &rows() const { return rows_; }

  int rowCount(const QModelIndex &parent = {}) const override {
    return parent.isValid() ? 0 : int(rows_.size());
  }
  int columnCount(const QModelIndex &parent = {}) const override {
    return parent.isValid() ? 0 : 1;
  }
  // The row's text while the row is inside the list; nothing otherwise.
  QVariant data(const QModelIndex &index, int role) const override;
  Qt::ItemFlags flags(const QModelIndex &index) const override;
  // The header shows the selection caption instead of a title.
  QVariant headerData(int, Qt::Orientation, int) const override { return {}; }

 private:
  QStringList rows_;
};
