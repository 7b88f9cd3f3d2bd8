#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QRegularExpression>
#include <QTranslator>

#include "Localization.h"

namespace {

// Each table on its own holds every key: one missing in Japanese would otherwise hide behind
// the English fallback. Japanese is for Japanese desktops only. The date range is computed
// from the range items' text, which must stay a number, a blank and a unit in both tables.
// A count takes the language's forms, and Qt's own words (the file dialog's, the standard
// buttons') come in the desktop's language from the system's table.
TEST(StringTables, EveryKeyInBothTablesJapaneseOnlyForJapaneseDesktops) {
  for (const char *path : {kEnglishStringTable, kJapaneseStringTable}) {
    QTranslator table;
    ASSERT_TRUE(table.load(QString::fromLatin1(path))) << path;
    for (const char *key : kStringTableKeys)
      EXPECT_FALSE(table.translate(nullptr, key).isEmpty()) << path << ": " << key;
  }
  for (QLocale::Language language : {QLocale::German, QLocale::Japanese}) {
    InstallStringTables(QLocale(language));
    const bool japanese = language == QLocale::Japanese;
    EXPECT_EQ(Localized("button_reconnect"), japanese ? QStringLiteral("再接続") : "Reconnect");
    EXPECT_EQ(Localized("job_saved", 1) + Localized("job_saved", 2),
              japanese ? QStringLiteral("1 件を保存しました。2 件を保存しました。")
                       : "Saved 1 item.Saved 2 items.");
    EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "Cancel"),
              japanese ? QStringLiteral("キャンセル") : "Abbrechen");
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
