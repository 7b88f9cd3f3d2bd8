#include <gtest/gtest.h>

#include <QRegularExpression>
#include <QTranslator>

#include "Localization.h"

namespace {

// Each table on its own holds every key: one missing in Japanese would otherwise hide behind
// the English fallback. Japanese is for Japanese desktops only. The date range is computed
// from the range items' text, which must stay a number, a blank and a unit in both tables.
TEST(StringTables, EveryKeyInBothTablesJapaneseOnlyForJapaneseDesktops) {
  for (const char *path : {kEnglishStringTable, kJapaneseStringTable}) {
    QTranslator table;
    ASSERT_TRUE(table.load(QString::fromLatin1(path))) << path;
    for (const char *key : kStringTableKeys)
      EXPECT_FALSE(table.translate(nullptr, key).isEmpty()) << path << ": " << key;
  }
  for (QLocale::Language language : {QLocale::German, QLocale::Japanese}) {
    InstallStringTables(QLocale(language));
    EXPECT_EQ(Localized("button_reconnect"),
              language == QLocale::Japanese ? QStringLiteral("再接続") : "Reconnect");
    for (int i = 0; i < 6; ++i) {
      const QString key = QStringLiteral("comboBox_index_search_range%1").arg(i);
      EXPECT_TRUE(QRegularExpression("^[1-9] \\S+$").match(Localized(qPrintable(key))).hasMatch())
          << qPrintable(Localized(qPrintable(key)));
    }
  }
  EXPECT_EQ(Localized("no_such_key"), QStringLiteral("no_such_key"));
  InstallStringTables(QLocale(QLocale::English));
}

}  // namespace
