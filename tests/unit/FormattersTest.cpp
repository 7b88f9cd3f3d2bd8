#include <gtest/gtest.h>

#include "Formatters.h"
#include "SystemLog.h"

namespace {

TEST(Formatters, NibbleHexStringPrintsLeastSignificantNibbleFirst) {
  EXPECT_EQ(NibbleHexString(0x12345678), "87654321");
  EXPECT_EQ(NibbleHexString(0x0000000F), "F0000000");
  EXPECT_EQ(NibbleHexString(-2), "EFFFFFFF");
}

TEST(Formatters, ByteArrayToStringNeedsExactlySixteenBytes) {
  LogCapture log;
  EXPECT_EQ(byteArrayToString(QByteArray::fromHex("000102030405060708090a0b0c0dfeff")),
            "000102030405060708090A0B0C0DFEFF");
  EXPECT_EQ(byteArrayToString(QByteArray(15, 'x')), std::nullopt);
  EXPECT_TRUE(log.contains("byteArrayToString size error! 15"));
}

TEST(Formatters, SixBitTextEncodeTurnsThreeBytesIntoFourCharacters) {
  EXPECT_EQ(SixBitTextEncode(QByteArray(3, '\0'), 3), QByteArray("    "));
  // 'M','a','n' = 0x4D616E -> 19, 22, 5, 46, each plus 32.
  EXPECT_EQ(SixBitTextEncode("Man", 3), QByteArray("36%N"));
  EXPECT_EQ(SixBitTextEncode("ManMan", 6), QByteArray("36%N36%N"));
  EXPECT_EQ(SixBitTextEncode("", 0), QByteArray(""));
  EXPECT_EQ(SixBitTextEncode("Mana", 4), std::nullopt);
  EXPECT_EQ(SixBitTextEncode("Ma", 3), std::nullopt);
}

}  // namespace
