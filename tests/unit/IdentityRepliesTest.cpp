#include <gtest/gtest.h>

#include <clocale>

#include "IdentityReplies.h"
#include "Localization.h"
#include "SessionContext.h"
#include "SessionWatch.h"
#include "SystemLog.h"

namespace {

// The reply rules, one read at a time, without a port: what state each reply leads to.
class IdentityRepliesTest : public ::testing::Test {
 protected:
  int32_t reply(int32_t status, QByteArray text) {
    context.state.phase = status;
    watch.clear();
    replies.handle(text.constData(), size_t(text.size()));
    return context.state.phase;
  }
  DeviceIdentity identity() const { return context.model.state().identity; }
  LogCapture log;
  SessionContext context;
  SessionWatch watch{context.model};
  IdentityReplies replies{context};
};

// The model is judged by the first eleven bytes of its reply, the details by "OK" and six or
// seven fields; anything else disconnects.
TEST_F(IdentityRepliesTest, ModelAndDetailRepliesAreJudgedByTheirShape) {
  EXPECT_EQ(reply(TRY_CONNECT_RX_KIND, "OK QM482CS\rtrailing bytes"), TRY_CONNECT_KIND_DONE);
  EXPECT_EQ(identity().model, "QM482");
  EXPECT_EQ(reply(TRY_CONNECT_RX_KIND, "OK QM482CSX\r\n"), DISCONNECTED);
  EXPECT_EQ(watch.boxes, QStringList{Localized("target_model_error")});

  EXPECT_EQ(reply(TRY_CONNECT_RX_DETAIL, "OK 1.180 QM482 2023-10-01 JPN BAT85\r\n"),
            TRY_CONNECT_DETAIL_DONE);
  EXPECT_EQ(identity().versionText, "1.180 JPN QM482 2023-10-01 BAT85");
  EXPECT_EQ(reply(TRY_CONNECT_RX_DETAIL, "OK 1.180 QM482 2023-10-01 HW2 JPN BAT85\r\n"),
            TRY_CONNECT_DETAIL_DONE);
  EXPECT_EQ(identity().versionText, "1.180 JPN QM482 HW2 BAT85");
  EXPECT_EQ(identity().firmware, 1.18);
  EXPECT_EQ(identity().detail.join(u' '), "1.180 QM482 2023-10-01 HW2 JPN BAT85");
  EXPECT_EQ(reply(TRY_CONNECT_RX_DETAIL, "OK 1 2 3 4 5 6 7\r\n"), DISCONNECTED);
  EXPECT_EQ(reply(TRY_CONNECT_RX_DETAIL, "NG 1.180 QM482 2023-10-01 JPN BAT85\r\n"), DISCONNECTED);
}

TEST_F(IdentityRepliesTest, FirmwareFromVersion1175PacesClipsWithVx) {
  const auto flowControl = [this](const char *version) {
    context.state.flowControl = 1;
    reply(TRY_CONNECT_RX_DETAIL, QByteArray("OK ") + version + " QM482 2023-10-01 JPN BAT85\r\n");
    return context.state.flowControl.load();
  };
  QList<int> paced;
  for (const char *version : {"1.17", "1.174", "1.175", "V1.2", "ver"})
    paced << flowControl(version);
  EXPECT_EQ(paced, QList<int>({0, 0, 1, 1, 0}));
  EXPECT_EQ(FirmwareVersion("1.2.3"), 1.2);

  // Where the decimal point is a comma, "1.180" read by the locale's rules is 1.
  ASSERT_NE(setlocale(LC_ALL, "de_DE.UTF-8"), nullptr) << "scripts/install-deps.sh makes it";
  EXPECT_EQ(flowControl("1.180"), 1);
  setlocale(LC_ALL, "C");
}

TEST_F(IdentityRepliesTest, SerialNumberReplyNeedsExactlyFiveFields) {
  context.state.indexSequence = 1;
  EXPECT_EQ(reply(TRY_CONNECT_RX_GSER, "OK QM482 SN 28417305 00\r\n"), TRY_TX_VOICE_INDEX);
  EXPECT_EQ(identity().serialNumber, "28417305");
  context.state.indexSequence = 0;
  EXPECT_EQ(reply(TRY_CONNECT_RX_GSER, "OK QM482 SN 28417305 00\r\n"), CONNECTED_IDLE);

  EXPECT_EQ(reply(TRY_CONNECT_RX_GSER, "OK QM482 SN 28417305\r\n"), DISCONNECTED);
  EXPECT_EQ(reply(TRY_CONNECT_RX_GSER, "OK QM482 SN 28417305 00 extra\r\n"), DISCONNECTED);
  EXPECT_EQ(reply(TRY_CONNECT_RX_GSER, "OK QM482 SN \xc3\x28 00\r\n"), DISCONNECTED);
  EXPECT_TRUE(watch.boxes.isEmpty());
}

}  // namespace
