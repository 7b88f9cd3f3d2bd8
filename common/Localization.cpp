#include "Localization.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

QString Localized(const char *key) {
  return qtTrId(key);
}

QString Localized(const char *key, int count) {
  return qtTrId(key, count);
}

bool InstallStringTables(const QLocale &locale) {
  static QTranslator *english = nullptr;
  static QTranslator *japanese = nullptr;
  static QTranslator *qt = nullptr;
  for (QTranslator **table : {&english, &japanese, &qt}) {
    if (*table != nullptr) {
      QCoreApplication::removeTranslator(*table);
      delete *table;
      *table = nullptr;
    }
  }

  // Qt consults the table installed last first: Qt's own goes in first, under ours, and
  // English before Japanese. The distribution ships Qt's own tables apart from Qt; without
  // them Qt's dialogs speak English.
  qt = new QTranslator;
  if (qt->load(locale, QStringLiteral("qtbase"), QStringLiteral("_"),
               QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
    QCoreApplication::installTranslator(qt);
  english = new QTranslator;
  bool loaded = english->load(QString::fromLatin1(kEnglishStringTable));
  QCoreApplication::installTranslator(english);
  if (locale.language() == QLocale::Japanese) {
    japanese = new QTranslator;
    loaded = japanese->load(QString::fromLatin1(kJapaneseStringTable)) && loaded;
    QCoreApplication::installTranslator(japanese);
  }
  return loaded;
}
