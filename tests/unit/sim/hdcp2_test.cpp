// HDCP 2 of the simulated HAL: sources, pairing and repeaters.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "SimHal.h"
#include "k2v/hdcp2.h"

namespace {

constexpr int kOk = K2V_RHAL_OK, kFail = K2V_RHAL_ERR_FAIL, kParam = K2V_RHAL_ERR_PARAM,
              kOrder = K2V_RHAL_ERR_ORDER;

void Start() {
  ASSERT_EQ(K2V_RHAL_HDCP2_Initialize(), kOk);
  ASSERT_EQ(K2V_RHAL_HDCP2_LoadKeys(), kOk);
}

K2V_HDCP2_STATUS_T StatusOf(uint8_t port) {
  K2V_HDCP2_STATUS_T status{};
  EXPECT_EQ(K2V_RHAL_HDCP2_GetStatus(port, &status), kOk);
  return status;
}

TEST(Hdcp2, EnforcesOrderAndArguments) {
  EXPECT_EQ(K2V_RHAL_HDCP2_LoadKeys(), kOrder);
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_AKE), kOrder);
  Start();
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(4, K2V_HDCP2_STATE_AKE), kParam);
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_IDLE), kParam);
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_FAILED), kParam);
  EXPECT_EQ(K2V_RHAL_HDCP2_SetRepeater(2), kParam);
}

TEST(Hdcp2, OnlySourcesWithHdcp2Authenticate) {
  Start();
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_STREAM), kOk);
  EXPECT_EQ(StatusOf(0).eState, K2V_HDCP2_STATE_AUTHENTICATED) << "it is no repeater";
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(1, K2V_HDCP2_STATE_STREAM), kFail);
  EXPECT_EQ(StatusOf(1).eReason, K2V_HDCP2_REASON_NO_SOURCE) << "a tuner with HDCP 1.4";
  simhal::Apply("signal 0 off");
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_STREAM), kFail);
  EXPECT_EQ(StatusOf(0).eReason, K2V_HDCP2_REASON_NO_SOURCE);
  EXPECT_EQ(K2V_RHAL_HDCP2_Deauthenticate(0), kOk);
  EXPECT_EQ(StatusOf(0).eState, K2V_HDCP2_STATE_IDLE);
}

TEST(Hdcp2, NoLinkIsAuthenticatedAfterItBroke) {
  Start();
  for (const auto& commands : {std::pair{"unplug 0", "plug 0 3840x2160p60 hdr"},
                               {"plug 0 3840x2160p60 hdr", "plug 0 3840x2160p60 hdr"},
                               {"signal 0 off", "signal 0 on"}}) {
    ASSERT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_STREAM), kOk);
    EXPECT_EQ(StatusOf(0).eState, K2V_HDCP2_STATE_AUTHENTICATED);
    for (const char* command : {commands.first, commands.second}) {
      simhal::Apply(command);
      EXPECT_EQ(StatusOf(0).eState, K2V_HDCP2_STATE_IDLE) << command;
      EXPECT_EQ(StatusOf(0).eReason, K2V_HDCP2_REASON_NONE) << command;
    }
  }
}

TEST(Hdcp2, ASourceUsesTheKeyThatItStoredUntilItsProofFails) {
  Start();
  K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_AKE);
  EXPECT_EQ(StatusOf(0).bPaired, 0);
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_AUTHENTICATED), kOk);
  EXPECT_EQ(StatusOf(0).bPaired, 1);
  simhal::Apply("hdcp2 0 wrong-h");
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_AKE), kFail);
  simhal::Apply("hdcp2 0 ok");
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_AKE), kOk);
  EXPECT_EQ(StatusOf(0).bPaired, 0);
}

TEST(Hdcp2, ARepeaterLearnsTheStreamType) {
  Start();
  K2V_RHAL_HDCP2_SetRepeater(1);
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_STREAM), kOk);
  const K2V_HDCP2_STATUS_T status = StatusOf(0);
  EXPECT_EQ(status.eState, K2V_HDCP2_STATE_STREAM);
  EXPECT_EQ(status.bRepeater, 1);
  EXPECT_EQ(status.nStreamType, 1);
}

TEST(Hdcp2, KeysStayThoseOfTheBoard) {
  Start();
  K2V_HDCP2_KEY_INFO_T before{}, after{};
  K2V_RHAL_HDCP2_GetKeyInfo(&before);
  K2V_RHAL_HDCP2_EraseKeys();
  K2V_RHAL_HDCP2_LoadKeys();
  K2V_RHAL_HDCP2_GetKeyInfo(&after);
  EXPECT_TRUE(std::equal(std::begin(before.receiverId), std::end(before.receiverId),
                         std::begin(after.receiverId)));
  EXPECT_NE(simhal::Apply("hdcp2 0 broken").find("wrong-h"), std::string::npos);
}

}  // namespace
