#include <gtest/gtest.h>

#include "TextValues.h"

namespace {

// Device texts are read as far as they parse; garbage must give a number, never an
// overflow. The voice index header and entries are split at any of several separators.
TEST(TextValues, NumbersReadTheirLongestValidPrefixAndSplittingKeepsEmptyPieces) {
  EXPECT_EQ(IntValue(u"  -12ab"), -12);
  EXPECT_EQ(IntValue(u"99999999999999"), 2147483647);
  EXPECT_EQ(HexValue(u"3e0)"), 0x3E0u);
  EXPECT_EQ(HexValue(u"G1"), 0u);
  EXPECT_EQ(HexValue(u"123456789ABC"), 0xFFFFFFFFu);
  EXPECT_EQ(SplitAtAnyOf(u"03(002-7A7)", u"()-"), QStringList({"03", "002", "7A7", ""}));
  EXPECT_EQ(SplitAtAnyOf(u"", u","), QStringList({""}));
}

}  // namespace
