#include "StoragePaths.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <cerrno>
#include <cstring>

#include "SystemLog.h"

QString DownloadsFolder() {
  const QStringList found = QStandardPaths::standardLocations(QStandardPaths::DownloadLocation);
  return found.isEmpty() ? QString() : found.first();
}

QString AppendPathComponent(const QString &folder, const QString &component) {
  return QDir::cleanPath(folder + u'/' + component);
}

StoragePaths StoragePathsIn(const QString &downloads) {
  // Two of the names start with a slash and one does not; joined as path components
  // they land in the same place.
  return {AppendPathComponent(downloads, QStringLiteral("/Mrvtq5dk/voice")),
          AppendPathComponent(downloads, QStringLiteral("/Mrvtq5dk/log")),
          AppendPathComponent(downloads, QStringLiteral("Mrvtq5dk/tempVoiceData.bin"))};
}

namespace {

// Creates the folder unless something is already there: anything at the path counts,
// folder or not, and the download that needs it reports the problem. Returns the error
// text, empty on success.
QString MakeFolder(const QString &path) {
  if (QFileInfo::exists(path)) return {};
  errno = 0;
  if (QDir().mkpath(path)) return {};
  return QStringLiteral("%1 (%2)").arg(path, QString::fromLocal8Bit(std::strerror(errno)));
}

}  // namespace

bool CreateFolder(StoragePaths &paths, const QString &downloads,
                  const std::function<void(const QString &)> &messageBox) {
  if (!downloads.isEmpty()) paths = StoragePathsIn(downloads);
  if (const QString error = MakeFolder(paths.voiceFolder); !error.isEmpty()) {
    SystemLog("create voice folder Error. %s", qUtf8Printable(error));
    if (messageBox) messageBox(QStringLiteral("voice folder create error!"));
    return false;
  }
  if (const QString error = MakeFolder(paths.logFolder); !error.isEmpty()) {
    SystemLog("create logs folder Error. %s", qUtf8Printable(error));
    if (messageBox) messageBox(QStringLiteral("logs folder create error!"));
    return false;
  }
  return true;
}
