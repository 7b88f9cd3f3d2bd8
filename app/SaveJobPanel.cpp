#include "SaveJobPanel.h"

#include <QDesktopServices>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QUrl>

#include "Localization.h"
#include "SaveResult.h"

namespace {

constexpr int kRefreshMs = 250;

}  // namespace

SaveJobPanel::SaveJobPanel(SaveAllNew &job, Controls controls, QWidget *boxParent)
    : job_(job), controls_(controls), boxParent_(boxParent) {
  controls_.bar->hide();
  controls_.label->hide();
  controls_.cancel->hide();
  controls_.cancel->setText(Localized("Cancel"));
  connect(controls_.cancel, &QPushButton::clicked, this, [this] {
    controls_.cancel->setEnabled(false);  // one cancel is enough; the item under way ends first
    job_.cancel();
  });
  ticker_.setInterval(kRefreshMs);
  connect(&ticker_, &QTimer::timeout, this, [this] { refresh(); });
}

void SaveJobPanel::saveAllNew(std::function<void()> then) {
  job_.start([this, then](const SaveAllReport &report) { ended(report, then); });
  show();
}

void SaveJobPanel::save(const QList<DeviceLibrary::Item> &items, std::function<void()> then) {
  job_.start(items, [this, then](const SaveAllReport &report) { ended(report, then); });
  show();
}

void SaveJobPanel::show() {
  controls_.clipBar->hide();
  controls_.bar->setValue(0);
  controls_.bar->show();
  controls_.label->show();
  controls_.cancel->setEnabled(true);
  controls_.cancel->show();
  refresh();
  ticker_.start();
}

void SaveJobPanel::refresh() {
  const SaveAllProgress progress = job_.progress();
  // Bytes measure the job best; a job of dives read with the listing has none to move.
  const double share = progress.bytesTotal > 0 ? double(progress.bytesDone) / progress.bytesTotal
                       : progress.total > 0    ? double(progress.done) / progress.total
                                               : 1.0;
  controls_.bar->setValue(int(share * controls_.bar->maximum()));
  controls_.label->setText(describeProgress(progress));
  if (job_.running()) controls_.clipBar->hide();  // a clip's download shows it
}

void SaveJobPanel::ended(const SaveAllReport &report, const std::function<void()> &then) {
  ticker_.stop();
  controls_.bar->hide();
  controls_.label->hide();
  controls_.cancel->hide();
  controls_.clipBar->hide();
  const QString text = describeReport(report);
  controls_.status->setText(text.section(u'\n', 0, 0));
  QMessageBox box(QMessageBox::Information, QStringLiteral("Mrvtq5dk"), text, QMessageBox::NoButton,
                  boxParent_);
  box.setObjectName(QStringLiteral("jobReportBox"));
  box.addButton(QStringLiteral("OK"), QMessageBox::AcceptRole);
  QPushButton *open = box.addButton(Localized("open_folder"), QMessageBox::ActionRole);
  box.exec();
  if (box.clickedButton() == open && folder) {
    QDesktopServices::openUrl(QUrl::fromLocalFile(folder()));
  }
  if (then) then();
}

QString SaveJobPanel::describeProgress(const SaveAllProgress &progress) const {
  QStringList parts;
  if (progress.current) {
    parts << Localized("job_item")
                 .arg(itemText(*progress.current))
                 .arg(std::min(progress.done + 1, progress.total))
                 .arg(progress.total);
  }
  if (progress.bytesTotal > 0) {
    parts << Localized("job_bytes").arg(progress.bytesDone / 1024).arg(progress.bytesTotal / 1024);
  }
  if (progress.msLeft >= 0) parts << Localized("job_time_left").arg((progress.msLeft + 999) / 1000);
  return parts.join(QStringLiteral(" · "));
}

QString SaveJobPanel::describeReport(const SaveAllReport &report) const {
  QStringList lines{Localized("job_saved", int(report.saved.size()))};
  if (!report.saved.isEmpty()) lines << DescribeSaveFolders(report.saved);
  if (!report.failed.isEmpty()) {
    lines << Localized("job_failed", int(report.failed.size()));
    for (const SaveAllReport::Failed &failed : report.failed) {
      lines << QStringLiteral("%1: %2").arg(itemText(failed.item),
                                            failed.outcome.sentence.simplified());
    }
  }
  if (report.damaged > 0) lines << Localized("job_damaged", report.damaged);
  if (report.cancelled) lines << Localized("job_cancelled");
  return lines.join(u'\n');
}
