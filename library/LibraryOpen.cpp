// Opening the library: the schema, the checks a database must pass, and setting aside one
// that fails them.

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QStandardPaths>
#include <atomic>

#include "Library.h"
#include "LibrarySql.h"
#include "Localization.h"
#include "SystemLog.h"

namespace {

// Kept in the database's user_version; a database with another number is not read.
constexpr int kSchemaVersion = 1;

// Times are milliseconds since the epoch (UTC). A file's modified time is recorded only once
// it had settled when the file was hashed (see Library.cpp); it stays empty until then. Items are
// named by the caller's key: a dive by its number as decimal text, a clip by its recording time.
const char *const kSchema[] = {
    "CREATE TABLE devices (id INTEGER PRIMARY KEY, model TEXT NOT NULL, serial TEXT NOT NULL,"
    " last_seen INTEGER NOT NULL, seen_order INTEGER NOT NULL, UNIQUE (model, serial))",
    "CREATE TABLE dives (device INTEGER NOT NULL REFERENCES devices (id), number INTEGER NOT NULL,"
    " start INTEGER, page BLOB NOT NULL, PRIMARY KEY (device, number))",
    "CREATE TABLE clips (device INTEGER NOT NULL REFERENCES devices (id), key TEXT NOT NULL,"
    " entry TEXT NOT NULL, start INTEGER, PRIMARY KEY (device, key))",
    "CREATE TABLE files (path TEXT PRIMARY KEY, device INTEGER NOT NULL REFERENCES devices (id),"
    " kind TEXT NOT NULL, item TEXT NOT NULL, size INTEGER NOT NULL, sha256 BLOB NOT NULL,"
    " saved_at INTEGER NOT NULL, modified INTEGER)",
    "CREATE INDEX files_by_item ON files (device, kind, item)",
};
constexpr int kTableCount = 4;

std::atomic<int> connectionsOpened = 0;  // libraries are opened on more than one thread

// "<file>.broken-<yyyyMMdd-HHmmss>", or with "-2", "-3"... when that is taken.
QString SetAsideName(const QString &path) {
  const QString base =
      path + ".broken-" + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
  QString name = base;
  for (int n = 2; QFileInfo::exists(name) || QFileInfo::exists(name + "-wal"); ++n)
    name = base + "-" + QString::number(n);
  return name;
}

// Renames the database and its journals: left behind, a journal would be played into the new
// database of that name. The shared-memory index is rebuilt from the journal, so it goes.
bool SetAside(const QString &path, const QString &aside) {
  if (!QFile::rename(path, aside)) return false;
  for (const char *journal : {"-wal", "-journal"})
    if (QFileInfo::exists(path + journal)) QFile::rename(path + journal, aside + journal);
  QFile::remove(path + "-shm");
  return true;
}

}  // namespace

QString Library::DefaultPath() {
  // The window's application data folder and its persistence container, which the command
  // line shares: its own application name would give it a folder of its own.
  const QString folder =
      QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/Mrvtq5dk";
  QDir().mkpath(folder);
  return folder + "/Mrvtq5dk.sqlite";
}

Library::Library(QString path, Access access)
    : path_(QDir::cleanPath(QFileInfo(path).absoluteFilePath())),
      connection_(QStringLiteral("mrvtq5dk-library-%1").arg(++connectionsOpened)) {
  QDir().mkpath(QFileInfo(path_).path());
  const QByteArray file = path_.toUtf8();
  QString why;
  const Opening opening = connect(why, access);
  if (opening == Opening::Opened) {
    open_ = true;
    return;
  }
  close();
  if (access == Access::Reader) {
    // Its owner opened it a moment ago: a reader that cannot follow finds it held or
    // replaced by a newer version, and says so.
    notice_ = Localized(opening == Opening::Newer ? "library_newer" : "library_in_use");
    SystemLog("library %s not shared: %s", file.constData(), qPrintable(why));
    return;
  }
  if (opening == Opening::Busy || opening == Opening::Newer) {
    // Not broken: another program holds it, or a newer version of this one wrote it and
    // may read it again. Left as it is, and this run goes on without a library.
    notice_ = Localized(opening == Opening::Busy ? "library_in_use" : "library_newer");
    SystemLog("library %s left as it is: %s", file.constData(), qPrintable(why));
    return;
  }
  // Every way of ending up without a readable library is told with the same words.
  notice_ = Localized("library_set_aside").arg(QFileInfo(path_).fileName());
  if (!QFileInfo::exists(path_)) {
    SystemLog("library %s could not be created: %s", file.constData(), qPrintable(why));
    return;
  }
  const QString aside = SetAsideName(path_);
  if (!SetAside(path_, aside)) {
    SystemLog("library %s could not be set aside: %s", file.constData(), qPrintable(why));
    return;
  }
  SystemLog("library %s set aside as %s: %s", file.constData(), qPrintable(aside), qPrintable(why));
  notice_ = Localized("library_set_aside").arg(QFileInfo(aside).fileName());
  if (connect(why) == Opening::Opened) {
    open_ = true;
    return;
  }
  close();
  SystemLog("library %s could not be created: %s", file.constData(), qPrintable(why));
}

Library::~Library() {
  close();
  QSqlDatabase::removeDatabase(connection_);
}

void Library::close() {
  QSqlDatabase::database(connection_, false).close();
}

Library::Opening Library::connect(QString &why, Access access) {
  const bool owner = access == Access::Owner;
  QSqlDatabase db = QSqlDatabase::contains(connection_)
                        ? QSqlDatabase::database(connection_, false)
                        : QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection_);
  db.setDatabaseName(path_);
  db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
  if (!db.open()) {
    why = db.lastError().text();
    return Opening::Broken;
  }
  QSqlQuery query(db);
  // The first value of a one-row answer, or none when the statement failed.
  const auto value = [&query](const char *sql) -> std::optional<QVariant> {
    if (!query.exec(QString::fromLatin1(sql)) || !query.next()) return std::nullopt;
    return query.value(0);
  };
  const auto failed = [&query, &why] {
    why = query.lastError().text();
    const QString code = query.lastError().nativeErrorCode();  // SQLITE_BUSY, SQLITE_LOCKED
    return code == QLatin1String("5") || code == QLatin1String("6") ? Opening::Busy
                                                                    : Opening::Broken;
  };

  // The owner checks the whole file once; its readers trust that check.
  const auto check =
      owner ? value("PRAGMA integrity_check") : std::optional<QVariant>(QStringLiteral("ok"));
  if (!check) return failed();
  if (check->toString() != QLatin1String("ok")) {
    why = "integrity check: " + check->toString();
    return Opening::Broken;
  }
  const auto version = value("PRAGMA user_version");
  const auto objects = value("SELECT COUNT(*) FROM sqlite_master");
  if (!version || !objects) return failed();
  // Only the owner creates; to a reader an empty file is of no version it knows.
  if (owner && version->toInt() == 0 && objects->toInt() == 0) {
    const bool created = InTransaction(connection_, "create", [](QSqlDatabase &db) {
      QSqlQuery create(db);
      for (const char *statement : kSchema)
        if (!RunSql(create, QString::fromLatin1(statement))) return false;
      return RunSql(create, QStringLiteral("PRAGMA user_version = %1").arg(kSchemaVersion));
    });
    if (!created) {
      why = QStringLiteral("the tables could not be created");
      return Opening::Broken;
    }
  } else if (version->toInt() > kSchemaVersion) {
    why = QStringLiteral("written by a newer version (schema %1)").arg(version->toInt());
    return Opening::Newer;
  } else if (version->toInt() != kSchemaVersion) {
    why = QStringLiteral("unknown schema version %1").arg(version->toInt());
    return Opening::Broken;
  }
  const auto tables = value(
      "SELECT COUNT(*) FROM sqlite_master WHERE type = 'table'"
      " AND name IN ('devices', 'dives', 'clips', 'files')");
  if (!tables) return failed();
  if (tables->toInt() != kTableCount) {
    why = QStringLiteral("tables are missing");
    return Opening::Broken;
  }
  // Libraries written before files' modified times were kept gain the column, empty: their
  // files are hashed once more, then trusted. Programs of that time write rows without it.
  const auto hasModified =
      value("SELECT COUNT(*) FROM pragma_table_info('files') WHERE name = 'modified'");
  if (!hasModified) return failed();
  if (hasModified->toInt() == 0) {
    if (!owner) {  // the owner adds it when it opens
      why = QStringLiteral("the files' modified times are not kept yet");
      return Opening::Broken;
    }
    if (!query.exec(QStringLiteral("ALTER TABLE files ADD COLUMN modified INTEGER")))
      return failed();
  }
  // Readers and the one writer no longer wait on each other; commits stay atomic. A commit
  // reaches the disk at the next checkpoint rather than at once: a power cut may forget the
  // last few writes but never damages the database, and the files themselves are the truth.
  query.exec(QStringLiteral("PRAGMA journal_mode = WAL"));
  query.exec(QStringLiteral("PRAGMA synchronous = NORMAL"));
  return Opening::Opened;
}
