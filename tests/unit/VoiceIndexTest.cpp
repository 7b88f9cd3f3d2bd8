#include <gtest/gtest.h>

#include "SystemLog.h"
#include "VoiceIndex.h"

namespace {

const VoiceBlockRing kDefaultRing;

TEST(VoiceClipSize, CountsBlocksAcrossTheHoleAndAroundTheRing) {
  LogCapture quiet;
  // 14 blocks.
  EXPECT_EQ(GetVoiceDataSize("230405-130722_002-00F", kDefaultRing), 14 * 130560);
  // 992..1040 spans the 24-block hole: 25 blocks.
  EXPECT_EQ(GetVoiceDataSize("230405-130722_3E0-410", kDefaultRing), 3264000);
  // Ends on block 1024, the hole's last: corrected too, 9 blocks.
  EXPECT_EQ(GetVoiceDataSize("230405-130722_3E0-400", kDefaultRing), 9 * 130560);
  // Ends just before the hole: no correction.
  EXPECT_EQ(GetVoiceDataSize("230405-130722_3E0-3FF", kDefaultRing), 32 * 130560);
  // Wraps from 1952 to 5 without touching the hole: 12 blocks.
  EXPECT_EQ(GetVoiceDataSize("230405-130722_7A0-005", kDefaultRing), 1566720);
  // Wraps from 992 to 5: the hole rule for wrapped clips applies.
  EXPECT_EQ(GetVoiceDataSize("230405-130722_3E0-005", kDefaultRing),
            (5 - 992 + 1957) * 130560 + 130560 - 3002880);
  // The wrap follows the ring that the last header gave.
  EXPECT_EQ(GetVoiceDataSize("230405-130722_7A0-005", VoiceBlockRing{2, 1999}),
            (5 - 1952 + 1997) * 130560 + 2 * 130560);
  // Misshapen entries give nothing to download.
  EXPECT_EQ(GetVoiceDataSize("230405-130722-002-00F-1", kDefaultRing), 0);
  EXPECT_EQ(GetVoiceDataDate("230405130722_002"), 0);
}

TEST(VoiceListLine, ShowsDateTimeAndMinutesByPosition) {
  LogCapture quiet;
  EXPECT_EQ(GetVoiceDataDate("230405-130722_002-00F"), 20230405);
  EXPECT_EQ(VoiceListRow("230405-130722_002-00F", kDefaultRing), "2023/04/05 13:07 2min");
  // Minutes ignore the hole (49 blocks: 7.56 min shown as 7) ...
  EXPECT_EQ(VoiceListRow("211231_235959-3E0-410", kDefaultRing), "2021/12/31 23:59 7min");
  // ... and count a wrapped clip one block short (11 blocks).
  EXPECT_EQ(VoiceMinutes("230405-130722_7A0-005", kDefaultRing), 2);
  // 60 blocks: 8.16 min plus 0.9 still shows 9.
  EXPECT_EQ(VoiceMinutes("230405-130722_002-03D", kDefaultRing), 9);
  EXPECT_EQ(VoiceListRow("230405-130722_002-00", kDefaultRing), std::nullopt);
}

TEST(VoiceIndexReply, HeaderGivesCountAndRingAnEmptyDeviceKeepsTheRing) {
  LogCapture quiet;
  VoiceIndexState state;
  state.ring = {7, 8};
  const QByteArray reply =
      "03(002-7A7),230405-130722_002-00F,230406-080000_010-080,"
      "230407-090000_081-0FF,\r\n";
  ASSERT_TRUE(ApplyVoiceIndexReply(reply, state));
  ASSERT_TRUE(state.entries.has_value());
  EXPECT_EQ(state.entries->size(), 5);
  EXPECT_EQ(state.entries->at(1), "230405-130722_002-00F");
  EXPECT_EQ(state.entryCount, 3);
  EXPECT_EQ(state.ring.first, 2);
  EXPECT_EQ(state.ring.last, 1959);

  state.ring = {4, 900};
  EXPECT_TRUE(ApplyVoiceIndexReply("0(002-7A7),\r\n", state));
  EXPECT_EQ(state.entryCount, 0);
  EXPECT_EQ(state.ring.first, 4);
  EXPECT_EQ(state.ring.last, 900);

  // A header without its ring, or bytes that are not text, clear the index.
  EXPECT_FALSE(ApplyVoiceIndexReply("03,230405-130722_002-00F,\r\n", state));
  EXPECT_FALSE(state.entries.has_value());
  state.entries = QStringList{"old"};
  EXPECT_FALSE(ApplyVoiceIndexReply("03(002-7A7),\xff\xfe\r\n", state));
  EXPECT_FALSE(state.entries.has_value());
}

// A reply ends only in a read that holds its line end whole: "\r" and "\n" in different
// reads do not end it. Bytes after a zero byte are stored as zeros, their line end unseen.
// One reply longer than 4096 bytes is dropped whole; one of exactly 4096 (a full device) fits.
TEST(VoiceIndexAccumulator, RepliesEndInAReadWithTheLineEndAndOverlongOnesAreDropped) {
  LogCapture log;
  VoiceIndexAccumulator accumulator;
  EXPECT_EQ(accumulator.feed("01(002-7A7),\r", 13), std::nullopt);
  EXPECT_EQ(accumulator.feed("\n", 1), std::nullopt);
  EXPECT_EQ(accumulator.feed("x\r\n", 3), QByteArray("01(002-7A7),\r\nx\r\n"));
  const char chunk[] = {'0', '1', '\0', 'A', 'B', '\r', '\n'};
  EXPECT_EQ(accumulator.feed(chunk, sizeof chunk), std::nullopt);
  EXPECT_EQ(accumulator.feed("\r\n", 2), QByteArray("01\0\0\0\0\0\r\n", 9));

  const QByteArray block(4000, 'A');
  EXPECT_EQ(accumulator.feed(block.constData(), block.size()), std::nullopt);
  EXPECT_EQ(accumulator.feed(block.constData(), block.size()), std::nullopt);  // past 4096
  EXPECT_EQ(accumulator.feed("tail of the long reply\r\n", 24), std::nullopt);
  EXPECT_EQ(log.startingWith("voice index reply longer than 4096 bytes").size(), 1u);

  // The next reply is read cleanly.
  QByteArray full(4094, 'B');
  full += "\r\n";
  EXPECT_EQ(accumulator.feed(full.constData(), 2048), std::nullopt);
  EXPECT_EQ(accumulator.feed(full.constData() + 2048, 2048), full);
}

}  // namespace
