#include <gtest/gtest.h>

#include "TextValues.h"

namespace {

// Device texts are read as far as they parse; garbage must give a number, never a crash
// or an overflow.
TEST(TextValues, NumbersReadTheirLongestValidPrefix) {
  EXPECT_EQ(IntValue(u"230405"), 230405);
  EXPECT_EQ(IntValue(u"  -12ab"), -12);
  EXPECT_EQ(IntValue(u"x1"), 0);
  EXPECT_EQ(IntValue(u"99999999999999"), 2147483647);
  EXPECT_EQ(IntValue(u"-99999999999999"), -2147483647 - 1);

  EXPECT_EQ(HexValue(u"7A7"), 0x7A7u);
  EXPECT_EQ(HexValue(u"3e0)"), 0x3E0u);
  EXPECT_EQ(HexValue(u""), 0u);
  EXPECT_EQ(HexValue(u"G1"), 0u);
  EXPECT_EQ(HexValue(u"123456789ABC"), 0xFFFFFFFFu);
}

TEST(TextValues, SplittingKeepsEmptyPieces) {
  EXPECT_EQ(SplitAtAnyOf(u"03(002-7A7)", u"()-"), QStringList({"03", "002", "7A7", ""}));
  EXPECT_EQ(SplitAtAnyOf(u"230405-130722_002-00F", u"-_"),
            QStringList({"230405", "130722", "002", "00F"}));
  EXPECT_EQ(SplitAtAnyOf(u"", u","), QStringList({""}));
}

}  // namespace
