#include "Library.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>

#include "LibrarySql.h"
#include "SystemLog.h"

namespace {

// What a file holds, as far as the library tells files apart.
struct Fingerprint {
  qint64 size = 0;
  QByteArray sha256;
};

std::optional<Fingerprint> ReadFingerprint(const QString &path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
  QCryptographicHash hash(QCryptographicHash::Sha256);
  Fingerprint print;
  QByteArray chunk(1 << 16, Qt::Uninitialized);
  for (;;) {
    const qint64 read = file.read(chunk.data(), chunk.size());
    if (read < 0) return std::nullopt;
    if (read == 0) break;
    hash.addData(QByteArrayView(chunk.constData(), read));
    print.size += read;
  }
  print.sha256 = hash.result();
  return print;
}

// What the recorded fingerprint of a file says of it now.
struct FileCheck {
  bool unchanged = false;
  // When the file was hashed just now and its modification time had settled: that time,
  // to be recorded so that the next check need not read the file.
  std::optional<qint64> settledModified;
};

// Whether a file's modification time, taken before its bytes were read at now, is old enough
// to tell any later change (see Library::kSettledMs).
bool Settled(qint64 modified, qint64 now) {
  return modified < now - Library::kSettledMs;
}

// Whether the file is still there as it was recorded. The size is looked at first, so that
// most changed files are told without being read, then the modification time recorded once
// it had settled; only without one is the file read for its hash.
FileCheck CheckFile(const QString &path, qint64 size, const QByteArray &sha256,
                    const QVariant &recordedModified) {
  const QFileInfo info(path);
  if (!info.isFile() || info.size() != size) return {};
  const qint64 modified = info.lastModified().toMSecsSinceEpoch();
  if (!recordedModified.isNull() && recordedModified.toLongLong() == modified) return {true, {}};
  const qint64 now = QDateTime::currentMSecsSinceEpoch();
  const auto print = ReadFingerprint(path);
  if (!print || print->size != size || print->sha256 != sha256) return {};
  if (Settled(modified, now)) return {true, modified};
  return {true, {}};
}

QString CleanPath(const QString &path) {
  return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

QString KindName(ItemKind kind) {
  return kind == ItemKind::Dive ? QStringLiteral("dive") : QStringLiteral("clip");
}

// None for a kind this program does not write: a row from elsewhere holds no item of ours.
std::optional<ItemKind> KindNamed(const QString &name) {
  for (ItemKind kind : {ItemKind::Dive, ItemKind::Clip})
    if (name == KindName(kind)) return kind;
  return std::nullopt;
}

QVariant Millis(const QDateTime &time) {
  return time.isValid() ? QVariant(time.toMSecsSinceEpoch()) : QVariant();
}

QDateTime FromMillis(const QVariant &value) {
  return value.isNull() ? QDateTime() : QDateTime::fromMSecsSinceEpoch(value.toLongLong(), Qt::UTC);
}

// Adds the device, or marks it seen now, and gives its row id.
std::optional<qint64> TouchDevice(QSqlDatabase &db, const DeviceKey &device) {
  QSqlQuery query(db);
  const bool touched = RunSql(
      query,
      QStringLiteral("INSERT INTO devices (model, serial, last_seen, seen_order)"
                     " VALUES (?, ?, ?, (SELECT IFNULL(MAX(seen_order), 0) + 1 FROM devices))"
                     " ON CONFLICT (model, serial) DO UPDATE SET last_seen = excluded.last_seen,"
                     " seen_order = excluded.seen_order"),
      {device.model, device.serial, QDateTime::currentMSecsSinceEpoch()});
  if (!touched ||
      !RunSql(query, QStringLiteral("SELECT id FROM devices WHERE model = ? AND serial = ?"),
              {device.model, device.serial}) ||
      !query.next())
    return std::nullopt;
  return query.value(0).toLongLong();
}

}  // namespace

bool RunSql(QSqlQuery &query, const QString &sql, const QVariantList &values) {
  if (query.prepare(sql)) {
    for (const QVariant &value : values) query.addBindValue(value);
    if (query.exec()) return true;
  }
  SystemLog("library statement failed: %s (%s)", qPrintable(query.lastError().text()),
            qPrintable(sql.left(60)));
  return false;
}

bool InTransaction(const QString &connection, const char *what,
                   const std::function<bool(QSqlDatabase &)> &steps) {
  QSqlDatabase db = QSqlDatabase::database(connection, false);
  if (!db.transaction()) {
    SystemLog("library %s not begun: %s", what, qPrintable(db.lastError().text()));
    return false;
  }
  if (steps(db) && db.commit()) return true;
  SystemLog("library %s rolled back: %s", what, qPrintable(db.lastError().text()));
  db.rollback();
  return false;
}

bool Library::recordDive(const DeviceKey &device, const StoredDive &dive) {
  if (!open_) return false;
  return InTransaction(connection_, "recordDive", [&](QSqlDatabase &db) {
    const auto id = TouchDevice(db, device);
    QSqlQuery query(db);
    return id && RunSql(query,
                        QStringLiteral("INSERT OR REPLACE INTO dives (device, number, start, page)"
                                       " VALUES (?, ?, ?, ?)"),
                        {*id, dive.number, Millis(dive.startUtc), dive.page});
  });
}

bool Library::recordClip(const DeviceKey &device, const StoredClip &clip) {
  return recordClips(device, {clip});
}

bool Library::recordClips(const DeviceKey &device, const QList<StoredClip> &clips) {
  if (!open_) return false;
  return InTransaction(connection_, "recordClips", [&](QSqlDatabase &db) {
    const auto id = TouchDevice(db, device);
    if (!id) return false;
    QSqlQuery query(db);
    for (const StoredClip &clip : clips)
      if (!RunSql(query,
                  QStringLiteral("INSERT OR REPLACE INTO clips (device, key, entry, start)"
                                 " VALUES (?, ?, ?, ?)"),
                  {*id, clip.key, clip.entry, Millis(clip.start)}))
        return false;
    return true;
  });
}

bool Library::recordSaved(const DeviceKey &device, ItemKind kind, const QString &itemKey,
                          const QString &path) {
  if (!open_) return false;
  const QString file = CleanPath(path);
  const auto print = ReadFingerprint(file);
  if (!print) {
    SystemLog("library could not read %s", qPrintable(file));
    return false;
  }
  return InTransaction(connection_, "recordSaved", [&](QSqlDatabase &db) {
    const auto id = TouchDevice(db, device);
    QSqlQuery query(db);
    // The path is the key: a path recorded before for another item now holds this one.
    return id && RunSql(query,
                        QStringLiteral("INSERT OR REPLACE INTO files"
                                       " (path, device, kind, item, size, sha256, saved_at)"
                                       " VALUES (?, ?, ?, ?, ?, ?, ?)"),
                        {file, *id, KindName(kind), itemKey, print->size, print->sha256,
                         QDateTime::currentMSecsSinceEpoch()});
  });
}

std::optional<QString> Library::savedFile(const DeviceKey &device, ItemKind kind,
                                          const QString &itemKey) const {
  return savedFiles(device, kind, itemKey).of(itemKey);
}

std::optional<QString> Library::SavedFiles::of(const QString &itemKey) const {
  const auto found = byItem.constFind(itemKey);
  if (found == byItem.constEnd()) return std::nullopt;
  return *found;
}

Library::SavedFiles Library::savedFiles(const DeviceKey &device, ItemKind kind,
                                        const std::optional<QString> &onlyItem) const {
  QHash<QString, QString> saved;
  const auto id = deviceId(device);
  if (!id) return {};
  QSqlQuery query(QSqlDatabase::database(connection_, false));
  QVariantList values{*id, KindName(kind)};
  if (onlyItem) values.append(*onlyItem);
  if (!RunSql(query,
              QStringLiteral("SELECT item, path, size, sha256, modified FROM files"
                             " WHERE device = ? AND kind = ?%1"
                             " ORDER BY saved_at DESC, rowid DESC")
                  .arg(onlyItem ? QStringLiteral(" AND item = ?") : QString()),
              values))
    return {};
  QList<SettledFile> settled;
  while (query.next()) {
    const QString item = query.value(0).toString();
    if (saved.contains(item)) continue;  // its latest unchanged file is found
    const QString path = query.value(1).toString();
    const qint64 size = query.value(2).toLongLong();
    const QByteArray sha256 = query.value(3).toByteArray();
    const FileCheck check = CheckFile(path, size, sha256, query.value(4));
    if (!check.unchanged) continue;
    saved.insert(item, path);
    if (check.settledModified) settled.append({path, size, sha256, *check.settledModified});
  }
  rememberSettled(settled);
  return {saved};
}

std::optional<Library::ItemRef> Library::itemAt(const QString &path) const {
  if (!open_) return std::nullopt;
  const QString file = CleanPath(path);
  QSqlQuery query(QSqlDatabase::database(connection_, false));
  if (!RunSql(query,
              QStringLiteral("SELECT d.model, d.serial, f.kind, f.item, f.size, f.sha256,"
                             " f.modified FROM files f JOIN devices d ON d.id = f.device"
                             " WHERE f.path = ?"),
              {file}) ||
      !query.next())
    return std::nullopt;
  const std::optional<ItemKind> kind = KindNamed(query.value(2).toString());
  if (!kind) return std::nullopt;
  const qint64 size = query.value(4).toLongLong();
  const QByteArray sha256 = query.value(5).toByteArray();
  const FileCheck check = CheckFile(file, size, sha256, query.value(6));
  if (!check.unchanged) return std::nullopt;
  if (check.settledModified) rememberSettled({{file, size, sha256, *check.settledModified}});
  return ItemRef{
      {query.value(0).toString(), query.value(1).toString()}, *kind, query.value(3).toString()};
}

std::optional<Library::SettledFile> Library::ReadSettled(const QString &path) {
  const QFileInfo info(path);
  const qint64 modified = info.lastModified().toMSecsSinceEpoch();
  if (!info.isFile() || !Settled(modified, QDateTime::currentMSecsSinceEpoch()))
    return std::nullopt;
  const auto print = ReadFingerprint(path);
  if (!print || print->size != info.size()) return std::nullopt;
  return SettledFile{CleanPath(path), print->size, print->sha256, modified};
}

void Library::rememberSettled(const QList<SettledFile> &files) const {
  if (files.isEmpty()) return;
  // Only where the row still holds the fingerprint that was checked: it may have been
  // recorded again meanwhile.
  InTransaction(connection_, "rememberSettled", [&](QSqlDatabase &db) {
    QSqlQuery query(db);
    for (const SettledFile &file : files)
      if (!RunSql(query,
                  QStringLiteral("UPDATE files SET modified = ?"
                                 " WHERE path = ? AND size = ? AND sha256 = ?"),
                  {file.modified, file.path, file.size, file.sha256}))
        return false;
    return true;
  });
}

std::optional<qint64> Library::deviceId(const DeviceKey &device) const {
  if (!open_) return std::nullopt;
  QSqlQuery query(QSqlDatabase::database(connection_, false));
  if (!RunSql(query, QStringLiteral("SELECT id FROM devices WHERE model = ? AND serial = ?"),
              {device.model, device.serial}) ||
      !query.next())
    return std::nullopt;
  return query.value(0).toLongLong();
}

QList<DeviceKey> Library::devices() const {
  QList<DeviceKey> found;
  if (!open_) return found;
  QSqlQuery query(QSqlDatabase::database(connection_, false));
  if (!RunSql(query, QStringLiteral("SELECT model, serial FROM devices ORDER BY seen_order DESC")))
    return found;
  while (query.next()) found.append({query.value(0).toString(), query.value(1).toString()});
  return found;
}

QList<StoredDive> Library::dives(const DeviceKey &device) const {
  QList<StoredDive> found;
  const auto id = deviceId(device);
  QSqlQuery query(QSqlDatabase::database(connection_, false));
  if (!id || !RunSql(query,
                     QStringLiteral("SELECT number, start, page FROM dives WHERE device = ?"
                                    " ORDER BY start DESC, number DESC"),
                     {*id}))
    return found;
  while (query.next())
    found.append(
        {query.value(0).toInt(), FromMillis(query.value(1)), query.value(2).toByteArray()});
  return found;
}

QList<StoredClip> Library::clips(const DeviceKey &device) const {
  QList<StoredClip> found;
  const auto id = deviceId(device);
  QSqlQuery query(QSqlDatabase::database(connection_, false));
  if (!id || !RunSql(query,
                     QStringLiteral("SELECT key, entry, start FROM clips WHERE device = ?"
                                    " ORDER BY start DESC, key DESC"),
                     {*id}))
    return found;
  while (query.next())
    found.append(
        {query.value(0).toString(), query.value(1).toString(), FromMillis(query.value(2))});
  return found;
}
