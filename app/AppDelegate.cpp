#include "AppDelegate.h"

#include <QDir>
#include <QMessageBox>
#include <QPushButton>
#include <QSqlDriver>
#include <QSqlError>
#include <QStandardPaths>
#include <cstdlib>

#include "Localization.h"
#include "SystemLog.h"

namespace {

constexpr char kContainerName[] = "Mrvtq5dk";

}  // namespace

QSqlDatabase AppDelegate::persistentContainer() {
  std::lock_guard lock(containerMutex_);
  if (!containerOpen_) {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir().mkpath(folder);
    QSqlDatabase store =
        QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QString::fromLatin1(kContainerName));
    store.setDatabaseName(folder + QStringLiteral("/Mrvtq5dk.sqlite"));
    if (!store.open()) {
      SystemLog("Unresolved error %s, %s", qUtf8Printable(store.lastError().text()),
                qUtf8Printable(store.lastError().driverText()));
      std::abort();
    }
    containerOpen_ = true;
  }
  return QSqlDatabase::database(QString::fromLatin1(kContainerName));
}

void AppDelegate::save() {
  QSqlDatabase store = persistentContainer();
  // Nothing is ever written to the store, so there is never a change to commit; a
  // transaction that cannot be committed is rolled back and reported.
  if (store.transaction() && !store.commit()) {
    SystemLog("%s:%s unable to commit editing before saving", "AppDelegate", "save");
    store.rollback();
  }
}

AppDelegate::TerminateReply AppDelegate::confirmQuit() {
  if (clipUnderWay) return TerminateReply::Cancel;
  if (!containerOpen_) return TerminateReply::Now;  // no store opened: no changes
  QSqlDatabase store = persistentContainer();
  if (!store.transaction()) return TerminateReply::Now;  // nothing pending
  if (store.commit()) return TerminateReply::Now;
  SystemLog("%s:%s unable to commit editing to terminate", "AppDelegate",
            "applicationShouldTerminate");
  QMessageBox question(
      QMessageBox::Warning, Localized("Could not save changes while quitting. Quit anyway?"),
      Localized("Quitting now will lose any changes you have made since the last successful save"));
  question.addButton(Localized("Quit anyway"), QMessageBox::AcceptRole);
  QPushButton *cancel = question.addButton(Localized("Cancel"), QMessageBox::RejectRole);
  question.exec();
  return question.clickedButton() == cancel ? TerminateReply::Cancel : TerminateReply::Now;
}
