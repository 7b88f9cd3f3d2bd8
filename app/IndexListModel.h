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

  // New rows; none is marked until the library is asked. Rows off the device (the
  // library's, with no device plugged in) are greyed and say so.
  void setRows(const QStringList &rows, bool offDevice = false);
  const QStringList &rows() const { return rows_; }
  // The saved file of each row, in row order; none for a row not saved.
  void setSaved(const QList<std::optional<QString>> &savedPaths);
  // Further columns of each row, in row order (the dives' depth and water temperature).
  void setDetails(const QList<QStringList> &details);
  // A line of each row's own for its tooltip, in row order (why a dive page is damaged).
  void setNotes(const QStringList &notes) { notes_ = notes; }
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
