#pragma once

#include <QString>
#include <QStringList>
#include <functional>

class QFileDevice;
class QIODevice;

// How writing a file ended. A file is committed whole or not at all, so "not saved" also
// means that nothing was left under the final name and an older file there is untouched.
enum class SaveError {
  None,
  DiskFull,  // no space left (or over quota)
  ReadOnly,  // the folder or file may not be written (permissions, a read-only disk)
  InTheWay,  // something else of that name is there (a folder, say)
  Other,     // any other error; the reason holds the system's words
};

// Where a save stopped: the file could not be made, filled, or put in place.
enum class SaveStage { Open, Write, Commit };

struct SaveResult {
  SaveError error = SaveError::None;
  QString reason;  // the system's own words, for the log
  SaveStage failedAt = SaveStage::Commit;

  bool saved() const { return error == SaveError::None; }
  // So that a result reads as a condition, as the true-or-false results before it did.
  explicit operator bool() const { return saved(); }
};

// The failure a file device reports, classified by the errno of its last failed call,
// captured right after it. With no errno (0) the name at the file's path is looked at.
SaveResult SaveFailure(const QFileDevice &file, int systemError);

// "2023-11-05_23-00_45_profile.csv could not be saved: the disk is full." in the user's
// language; fileName is shown as it is. Empty for a result that was saved.
QString DescribeSaveFailure(const SaveResult &result, const QString &fileName);

// "Folder: /home/diver/Downloads/Mrvtq5dk/voice" in the user's language: where the files
// saved at paths are, each folder once, in the order first met ("Folders: …/log, …/voice").
// Empty for no paths.
QString DescribeSaveFolders(const QStringList &paths);

// Writes the file at path whole or not at all: write fills it (false when it could not),
// and only then is it put in place of an older file of that name.
SaveResult SaveWhole(const QString &path, const std::function<bool(QIODevice &)> &write);
