#include "SaveResult.h"

#include <QDir>
#include <QFileDevice>
#include <QFileInfo>
#include <QSaveFile>
#include <cerrno>
#include <cstring>

#include "Localization.h"

SaveResult SaveFailure(const QFileDevice &file, int systemError) {
  // The device's own text can be "Unknown error" where the system's words are known.
  const QString reason =
      systemError != 0 ? QString::fromLocal8Bit(std::strerror(systemError)) : file.errorString();
  switch (systemError) {
    case ENOSPC:
    case EDQUOT:
      return {SaveError::DiskFull, reason};
    case EACCES:
    case EPERM:
    case EROFS:
      return {SaveError::ReadOnly, reason};
    case EISDIR:
    case ENOTDIR:
    case EEXIST:
      return {SaveError::InTheWay, reason};
    case 0: {
      // A save file refuses some names itself, before any system call fails: a folder
      // standing at the name, or a file there that may not be written. The name tells.
      const QFileInfo there(file.fileName());
      if (there.isDir()) return {SaveError::InTheWay, reason};
      if (there.exists() && !there.isWritable()) return {SaveError::ReadOnly, reason};
      break;
    }
    default:
      break;
  }
  return {SaveError::Other, reason};
}

QString DescribeSaveFailure(const SaveResult &result, const QString &fileName) {
  QString why;
  switch (result.error) {
    case SaveError::None:
      return {};
    case SaveError::DiskFull:
      why = Localized("save_error_disk_full");
      break;
    case SaveError::ReadOnly:
      why = Localized("save_error_read_only");
      break;
    case SaveError::InTheWay:
      why = Localized("save_error_in_the_way");
      break;
    case SaveError::Other:
      why = Localized("save_error_other").arg(result.reason);
      break;
  }
  // One arg() call for both, so that a "%1" in the file name is not filled in turn.
  return Localized("save_failed").arg(fileName, why);
}

QString DescribeSaveFolders(const QStringList &paths) {
  QStringList folders;
  for (const QString &path : paths) {
    if (path.isEmpty()) continue;  // nothing saved
    const QString folder = QDir::toNativeSeparators(QFileInfo(path).absolutePath());
    if (!folders.contains(folder)) folders.append(folder);
  }
  if (folders.isEmpty()) return {};
  return Localized("saved_folder", int(folders.size()))
      .arg(folders.join(Localized("list_separator")));
}

SaveResult SaveWhole(const QString &path, const std::function<bool(QIODevice &)> &write) {
  QSaveFile file(path);
  const auto failure = [&file](SaveStage stage) {
    SaveResult result = SaveFailure(file, errno);
    result.failedAt = stage;
    return result;
  };
  errno = 0;
  if (!file.open(QIODevice::WriteOnly)) return failure(SaveStage::Open);
  errno = 0;
  if (!write(file)) return failure(SaveStage::Write);
  // Qt's commit() may report success for a file cut short by its last buffered write (a
  // disk that fills just then), so the buffer is written out and checked first.
  errno = 0;
  if (!file.flush() || !file.commit()) return failure(SaveStage::Commit);
  return {};
}
