#pragma once

#include <QObject>
#include <QStringList>
#include <functional>
#include <optional>

#include "IndexListModel.h"

class QLabel;
class QTableView;
class QWidget;

// One of the window's two lists: the table in its frame, the caption that repeats the picked
// row in the table's header, and the rows' model. A pick survives new rows; the diver's picks
// are logged and told to picked.
class IndexTable : public QObject {
 public:
  // name: the table's name in the log ("view_voice_index"); headerName: its header's object
  // name.
  IndexTable(QWidget *frame, QTableView *view, QLabel *caption, const char *name,
             const QString &headerName, QObject *parent);

  IndexListModel &model() { return *model_; }
  // The frame and caption, hidden at start; shown once there is something to list.
  void reveal();
  void conceal();
  bool revealed() const;
  // New rows. The device's rows keep the pick; the library's (offDevice) come unpicked.
  // Nobody hears of either.
  void setRows(const IndexListModel::Rows &rows);
  void setSaved(const QList<std::optional<QString>> &savedPaths) { model_->setSaved(savedPaths); }
  void pick(int row);
  // The first picked row, -1 for none.
  int picked() const;
  // Every picked row, in list order.
  QList<int> pickedRows() const;
  // Offered or withdrawn: a withdrawn or empty list is grey, with a blank caption.
  void offer(bool offered);
  // The clock the rows' times are on, named in the caption after the picked row.
  void setClockName(const QString &name) { clockName_ = name; }

  // The diver picked a row (-1: none).
  std::function<void(int row)> onPick;

 protected:
  // Keeps the caption as wide as the header.
  bool eventFilter(QObject *watched, QEvent *event) override;

 private:
  void pickChanged();
  // The caption for a picked row: the row, and the clock its time is on.
  QString captionFor(int row) const;

  QWidget *frame_;
  QTableView *view_;
  QLabel *caption_;
  IndexListModel *model_;
  const char *name_;
  QString clockName_;
};
