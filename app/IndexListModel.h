#pragma once

#include <QAbstractTableModel>
#include <QIcon>
#include <QStringList>
#include <optional>

// The rows of an index table, never editable: the row's text, then any detail columns. A
// row the library holds a saved file for shows a mark, and its tooltip names the file and
// says which clock the row's time is on.
class IndexListModel : public QAbstractTableModel {
 public:
  using QAbstractTableModel::QAbstractTableModel;

  struct Rows {
    QStringList texts;
    QList<QStringList> details;  // further columns (the dives' depth and water temperature)
    QStringList notes;           // a line of each row's own for its tooltip (why damaged)
    bool offDevice = false;      // the library's, with no device plugged in: greyed, and say so
  };
  // New rows, in row order; none is marked until the library is asked. True when the rows
  // shown were kept and the new ones added after them: a list that only grew.
  bool setRows(const Rows &rows);
  const QStringList &rows() const { return rows_; }
  // The saved file of each row, in row order; none for a row not saved.
  void setSaved(const QList<std::optional<QString>> &savedPaths);
  // Which clock the rows' times are on, for the tooltip.
  void setClockNote(const QString &note) { clockNote_ = note; }

  int rowCount(const QModelIndex &parent = {}) const override {
    return parent.isValid() ? 0 : int(rows_.size());
  }
  int columnCount(const QModelIndex &parent = {}) const override {
    return parent.isValid() ? 0 : 1 + detailColumns_;
  }
  // The row's text, its mark and its tooltip while the row is inside the list.
  QVariant data(const QModelIndex &index, int role) const override;
  Qt::ItemFlags flags(const QModelIndex &index) const override;
  // The header shows the selection caption instead of a title.
  QVariant headerData(int, Qt::Orientation, int) const override { return {}; }

 private:
  QStringList rows_;
  QList<std::optional<QString>> savedPaths_;
  QList<QStringList> details_;
  QStringList notes_;
  int detailColumns_ = 0;
  bool offDevice_ = false;
  QString clockNote_;
  QIcon savedMark_;
};
