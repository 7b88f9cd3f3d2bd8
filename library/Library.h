#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>
#include <cstdint>
#include <optional>

// The device a library entry belongs to.
struct DeviceKey {
  QString model;   // "QM482"
  QString serial;  // "28417305"
  bool operator==(const DeviceKey &) const = default;
};

enum class ItemKind { Dive, Clip };

// A dive page as read from the device, kept so the dive can be shown and exported without it.
struct StoredDive {
  int32_t number = 0;  // the device's history number
  QDateTime startUtc;  // on the device's clock (UTC)
  QByteArray page;     // the 4096-byte page
};

// A clip the device listed. Its start comes back from the library in UTC.
struct StoredClip {
  QString key;      // the caller's key for the clip (its recording time, "yyyyMMddHHmmss")
  QString entry;    // the voice index entry text as the device sent it
  QDateTime start;  // recording time on the device's clock
};

// The memory of what was read and saved: devices, the dive pages read, the clip entries seen
// and the files saved (path, size and SHA-256). The files are the truth: an item counts as
// saved only while its file is there with the size and hash recorded when it was saved.
// Every write is one transaction. A database that cannot be read is set aside and a new one
// started; nothing here is ever fatal. Each Library is used from the thread that made it.
class Library {
 public:
  // The owner opens, checks, creates and repairs; a reader shares a library its owner has
  // opened, from a thread of its own, and never changes its schema nor sets it aside.
  enum class Access { Owner, Reader };

  // Opens, or creates, the database at path. A file that cannot be opened, fails its
  // integrity check or has a schema this code does not know is renamed aside as
  // "<file>.broken-<yyyyMMdd-HHmmss>" (a number appended if that is taken), a new one is
  // created, one line is logged and notice() tells the user. When not even a new one can be
  // created, isOpen() is false, notice() says so and every call below does nothing and
  // answers empty. Shared with other running copies: a write waits up to 5 s for theirs.
  // A database another program keeps locked past that, or that a newer version of this
  // program wrote, is not broken: it is left as it is and this one stays closed the same
  // way, with its own notice. A reader that cannot open the database stays closed the same
  // way, with nothing changed.
  explicit Library(QString path = DefaultPath(), Access access = Access::Owner);
  ~Library();
  Library(const Library &) = delete;
  Library &operator=(const Library &) = delete;

  // The persistence container Mrvtq5dk.sqlite in the window's application data folder
  // (created if missing), shared by the command line.
  static QString DefaultPath();

  bool isOpen() const { return open_; }
  QString path() const { return path_; }
  // For the user, when the database had to be set aside or could not be opened; else empty.
  QString notice() const { return notice_; }

  // Insert, or replace the entry of the same device and number.
  bool recordDive(const DeviceKey &device, const StoredDive &dive);
  // Insert, or replace the entry of the same device and key.
  bool recordClip(const DeviceKey &device, const StoredClip &clip);
  // The same for several, in one transaction.
  bool recordClips(const DeviceKey &device, const QList<StoredClip> &clips);
  // The item's file was saved at path: records its size and SHA-256, read from the file now.
  // A path holds one item: recording it for another item takes it from the one before.
  // False, and nothing recorded, when the file cannot be read. For a dive, itemKey is its
  // number as decimal text.
  bool recordSaved(const DeviceKey &device, ItemKind kind, const QString &itemKey,
                   const QString &path);
  // The item's saved file (the latest recorded when there are several), only while it is
  // there with the recorded size and hash: a file the diver deleted or changed is not saved.
  std::optional<QString> savedFile(const DeviceKey &device, ItemKind kind,
                                   const QString &itemKey) const;
  // The same for every item of that kind (or only onlyItem), by item key, in one query. A
  // file is read for its hash only until its modification time has settled; from then on
  // its size and that time tell whether it changed.
  struct SavedFiles {
    QHash<QString, QString> byItem;  // item key -> path
    std::optional<QString> of(const QString &itemKey) const;
  };
  SavedFiles savedFiles(const DeviceKey &device, ItemKind kind,
                        const std::optional<QString> &onlyItem = {}) const;

  // Which item the file at path holds, as recorded, while the file still has the recorded
  // size and hash. None for a file the library did not save or that was changed since.
  struct ItemRef {
    DeviceKey device;
    ItemKind kind;
    QString itemKey;
  };
  std::optional<ItemRef> itemAt(const QString &path) const;

  // A file's modification time is trusted to tell a change only once it was older than this
  // when the file was read for its hash: a write soon after the hash could otherwise leave
  // the same time on other bytes (some file systems keep times to 2 s).
  static constexpr qint64 kSettledMs = 3000;
  // A file read whole, with its modification time from before the reading.
  struct SettledFile {
    QString path;
    qint64 size = 0;
    QByteArray sha256;
    qint64 modified = 0;
  };
  // Reads the file for its hash when its modification time has settled; none when it has
  // not or the file cannot be read. Touches no database: any thread.
  static std::optional<SettledFile> ReadSettled(const QString &path);
  // Records the files' times where the rows still hold their size and hash, so that they
  // are not read again while size and time stay.
  void rememberSettled(const QList<SettledFile> &files) const;

  QList<DeviceKey> devices() const;                        // most recently seen first
  QList<StoredDive> dives(const DeviceKey &device) const;  // newest start first
  QList<StoredClip> clips(const DeviceKey &device) const;  // newest start first

 private:
  enum class Opening { Opened, Broken, Busy, Newer };
  Opening connect(QString &why, Access access = Access::Owner);
  void close();
  std::optional<qint64> deviceId(const DeviceKey &device) const;  // none when never seen

  QString path_;
  QString connection_;
  QString notice_;
  bool open_ = false;
};
