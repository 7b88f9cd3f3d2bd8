#include "Localization.h"

#include <QCoreApplication>
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
  for (QTranslator **table : {&english, &japanese}) {
    if (*table != nullptr) {
      QCoreApplication::removeTranslator(*table);
      delete *table;
      *table = nullptr;
    }
  }

  // Qt consults the table installed last first, so English goes in before Japanese.
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
