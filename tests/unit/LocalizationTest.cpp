#include <gtest/gtest.h>

#include <QTranslator>

#include "Localization.h"

namespace {

// Each table on its own must hold every key: a key missing from the Japanese table would
// otherwise hide behind the English fallback.
TEST(StringTables, EveryKeyHasEnglishAndJapaneseText) {
  for (const char *path : {kEnglishStringTable, kJapaneseStringTable}) {
    QTranslator table;
    ASSERT_TRUE(table.load(QString::fromLatin1(path))) << path;
    for (const char *key : kStringTableKeys) {
      EXPECT_FALSE(table.translate(nullptr, key).isEmpty()) << path << ": " << key;
    }
  }
}

// The date range is computed from the item text: a number, a blank and a unit.
TEST(StringTables, SearchRangeItemsAreNumberBlankUnit) {
  const std::vector<std::pair<QLocale::Language, QStringList>> expected = {
      {QLocale::English, {"1 month", "3 months", "6 months", "1 year", "2 years", "5 years"}},
      {QLocale::Japanese, {"1 か月", "3 か月", "6 か月", "1 年", "2 年", "5 年"}}};
  for (const auto &[language, items] : expected) {
    InstallStringTables(QLocale(language));
    for (int i = 0; i < 6; ++i) {
      const QString key = QStringLiteral("comboBox_index_search_range%1").arg(i);
      EXPECT_EQ(Localized(key.toLatin1().constData()), items[i]);
    }
  }
  InstallStringTables(QLocale(QLocale::English));
}

TEST(StringTables, JapaneseOnlyForJapaneseAndMissingKeysReadAsThemselves) {
  InstallStringTables(QLocale(QLocale::Japanese));
  EXPECT_EQ(Localized("button_reconnect"), QStringLiteral("再接続"));
  EXPECT_EQ(Localized("no_such_key"), QStringLiteral("no_such_key"));

  InstallStringTables(QLocale(QLocale::German));
  EXPECT_EQ(Localized("button_reconnect"), QStringLiteral("Reconnect"));
  InstallStringTables(QLocale(QLocale::English));
  EXPECT_EQ(Localized("Disconnect"), QStringLiteral("Disconnected"));
}

}  // namespace
