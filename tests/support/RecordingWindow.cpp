#include "RecordingWindow.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

void RecordingWindow::record(const QString &call) {
  std::lock_guard lock(mutex_);
  calls_ << call;
}

void RecordingWindow::setText(Outlet outlet, const QString &text) {
  {
    std::lock_guard lock(mutex_);
    texts_[outlet] = text;
  }
  record("setText:" + QString::fromLatin1(OutletName(outlet)) + "=" + text);
}

void RecordingWindow::setVisible(Outlet outlet, bool visible) {
  record("setVisible:" + QString::fromLatin1(OutletName(outlet)) + (visible ? "=1" : "=0"));
}

void RecordingWindow::setEnabled(Outlet outlet, bool enabled) {
  record("setEnabled:" + QString::fromLatin1(OutletName(outlet)) + (enabled ? "=1" : "=0"));
}

void RecordingWindow::setProgress(int percent) {
  record("setProgress:" + QString::number(percent));
}

void RecordingWindow::reloadList(IndexList list, const QStringList &rows) {
  {
    std::lock_guard lock(mutex_);
    rows_[list] = rows;
  }
  record(
      QString("reloadList:%1=%2").arg(list == IndexList::Voice ? "voice" : "log").arg(rows.size()));
}

void RecordingWindow::selectRow(IndexList list, int row) {
  {
    std::lock_guard lock(mutex_);
    selected_[list] = row;
  }
  record(QString("selectRow:%1=%2").arg(list == IndexList::Voice ? "voice" : "log").arg(row));
}

int RecordingWindow::selectedRow(IndexList list) const {
  std::lock_guard lock(mutex_);
  return selected_.value(list, -1);
}

void RecordingWindow::setIsProcessing(bool processing) {
  std::lock_guard lock(mutex_);
  processing_ = processing;
}

QStringList RecordingWindow::calls() const {
  std::lock_guard lock(mutex_);
  return calls_;
}

QString RecordingWindow::text(Outlet outlet) const {
  std::lock_guard lock(mutex_);
  return texts_.value(outlet);
}

QStringList RecordingWindow::rows(IndexList list) const {
  std::lock_guard lock(mutex_);
  return rows_.value(list);
}

bool RecordingWindow::isProcessing() const {
  std::lock_guard lock(mutex_);
  return processing_;
}

void RecordingWindow::clear() {
  std::lock_guard lock(mutex_);
  calls_.clear();
  lastOutcome_.reset();
}

bool WaitFor(const std::function<bool()> &condition, int timeoutMs) {
  QElapsedTimer clock;
  clock.start();
  while (!condition()) {
    if (clock.elapsed() > timeoutMs) return false;
    QCoreApplication::processEvents();
    QThread::msleep(2);
  }
  return true;
}

OutcomeHandler RecordingWindow::outcomes() {
  return [this](const Outcome &outcome) {
    {
      std::lock_guard lock(mutex_);
      lastOutcome_ = outcome;
    }
    record("outcome:" + outcome.sentence);
  };
}

std::optional<Outcome> RecordingWindow::lastOutcome() const {
  std::lock_guard lock(mutex_);
  return lastOutcome_;
}
