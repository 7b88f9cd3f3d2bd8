#include "ExportDialog.h"

#include <QDate>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>

#include "LibraryShelf.h"
#include "Localization.h"

std::optional<LogbookExportRequest> AskLogbookExport(
    QWidget *parent, const DeviceKey &device, const QList<int32_t> &pickedDives,
    const QString &programFolder, const std::function<QString(const QString &)> &chooseFile) {
  LogbookExportRequest request;
  request.serial = device.serial;
  // The window always has a dive picked, so one picked row is no choice: every dive goes.
  if (pickedDives.size() > 1) {
    QMessageBox box(QMessageBox::Question, QStringLiteral("Mrvtq5dk"),
                    Localized("export_which", int(pickedDives.size())).arg(ShelfDeviceName(device)),
                    QMessageBox::NoButton, parent);
    box.setObjectName(QStringLiteral("exportWhichBox"));
    QPushButton *some = box.addButton(Localized("export_selected"), QMessageBox::AcceptRole);
    QPushButton *all = box.addButton(Localized("export_all"), QMessageBox::AcceptRole);
    box.addButton(Localized("Cancel"), QMessageBox::RejectRole);
    box.exec();
    if (box.clickedButton() != some && box.clickedButton() != all) return std::nullopt;
    if (box.clickedButton() == some) request.numbers = pickedDives;
  }
  request.downloads = QFileInfo(programFolder).absolutePath();
  request.file = chooseFile(
      QDir(programFolder)
          .filePath(QStringLiteral("Mrvtq5dk-%1-%2.uddf")
                        .arg(device.serial, QDate::currentDate().toString(Qt::ISODate))));
  if (request.file.isEmpty()) return std::nullopt;
  return request;
}
