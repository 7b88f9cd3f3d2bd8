#pragma once

#include <QObject>
#include <QTimer>
#include <functional>

#include "SaveAllNew.h"

class QLabel;
class QProgressBar;
class QPushButton;
class QWidget;

// The window's side of a job that saves several items: one progress bar for the whole
// job with the item under way, items and bytes done and the time left, a Cancel button
// beside it, and one box at the end with what was saved, what failed and why. Main thread.
class SaveJobPanel : public QObject {
 public:
  struct Controls {
    QProgressBar *bar;
    QLabel *label;
    QPushButton *cancel;
    QWidget *clipBar;  // a single clip's own bar, kept out of sight while a job runs
    QLabel *status;    // the window's status line: the report's first line at the end
  };
  SaveJobPanel(SaveAllNew &job, Controls controls, QWidget *boxParent);

  // Starts the job over every new item, or over the items given; ended hears the report
  // once the box at the end is dismissed.
  void saveAllNew(std::function<void()> ended);
  void save(const QList<DeviceLibrary::Item> &items, std::function<void()> ended);
  bool running() const { return job_.running(); }
  // Where "Open folder" goes.
  std::function<QString()> folder;
  // How an item is named, as the window lists it.
  std::function<QString(const DeviceLibrary::Item &)> itemText =
      [](const DeviceLibrary::Item &item) { return item.name; };

  // The line under the bar.
  QString describeProgress(const SaveAllProgress &progress) const;
  // The text of the box at the end.
  QString describeReport(const SaveAllReport &report) const;

 private:
  void show();
  void ended(const SaveAllReport &report, const std::function<void()> &then);
  void refresh();

  SaveAllNew &job_;
  Controls controls_;
  QWidget *boxParent_;
  QTimer ticker_;
};
