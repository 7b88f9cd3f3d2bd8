#pragma once

#include <QString>
#include <functional>

// Where the program keeps what it fetches: Downloads/Mrvtq5dk/voice for clips,
// Downloads/Mrvtq5dk/log for dives, and the clip being received in
// Downloads/Mrvtq5dk/tempVoiceData.bin until it becomes a WAV file.
struct StoragePaths {
  QString voiceFolder;
  QString logFolder;
  QString clipInProgressFile;
};

// The user's Downloads folder (first entry of the platform's search), or an empty text
// when the platform names none.
QString DownloadsFolder();

// The three paths below a Downloads folder.
StoragePaths StoragePathsIn(const QString &downloads);

// Joins a path component to a folder as the platform's path API does: one slash between
// them whether or not the component starts with one.
QString AppendPathComponent(const QString &folder, const QString &component);

// Recomputes the paths from the downloads folder (kept as they were if it is empty) and
// creates the voice and log folders if nothing exists there. On failure it logs, shows the
// fixed error text through messageBox and returns false; the log folder is not attempted
// after the voice folder failed. True when both exist afterwards.
bool CreateFolder(StoragePaths &paths, const QString &downloads,
                  const std::function<void(const QString &)> &messageBox);
