// HDCP 2 of the simulated HAL: sources, pairing and repeaters.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "SimHal.h"
#include "k2v/hdcp2.h"
#include "k2v/vfe_hdmi.h"

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
  EXPECT_EQ(StatusOf(0).eState, K2V_HDCP2_STATE_AUTHENTICATED) << "not a repeater";
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(1, K2V_HDCP2_STATE_STREAM), kFail);
  EXPECT_EQ(StatusOf(1).eReason, K2V_HDCP2_REASON_NO_SOURCE) << "a tuner with HDCP 1.4";
  simhal::Apply("signal 0 off");
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_STREAM), kFail);
  EXPECT_EQ(StatusOf(0).eReason, K2V_HDCP2_REASON_NO_SOURCE);
  EXPECT_EQ(K2V_RHAL_HDCP2_Deauthenticate(0), kOk);
  EXPECT_EQ(StatusOf(0).eState, K2V_HDCP2_STATE_IDLE);
}

TEST(Hdcp2, BrokenLinkIsNoLongerAuthenticated) {
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

TEST(Hdcp2, SourceUsesItsStoredKeyUntilTheProofFails) {
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

TEST(Hdcp2, RepeaterReceivesTheStreamType) {
  Start();
  K2V_RHAL_HDCP2_SetRepeater(1);
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_STREAM), kOk);
  const K2V_HDCP2_STATUS_T status = StatusOf(0);
  EXPECT_EQ(status.eState, K2V_HDCP2_STATE_STREAM);
  EXPECT_EQ(status.bRepeater, 1);
  EXPECT_EQ(status.nStreamType, 1);
}

/// The messages of the calls so far, such as "AKE_Init, 12".
std::vector<std::string> Messages() {
  const std::string prefix = "# hdcp2 port 0: ", suffix = " bytes";
  std::vector<std::string> messages;
  for (const std::string& line : simhal::Calls()) {
    if (!line.starts_with(prefix)) continue;
    messages.push_back(line.substr(prefix.size(), line.size() - prefix.size() - suffix.size()));
  }
  return messages;
}

TEST(Hdcp2, ExchangesTheMessagesOfTheProtocol) {
  using Strings = std::vector<std::string>;
  const Strings locality = {"LC_Init, 9", "LC_Send_L_prime, 33", "SKE_Send_Eks, 25"};
  Strings expected = {"AKE_Init, 12", "AKE_Send_Cert, 534", "AKE_No_Stored_km, 129",
                      "AKE_Send_H_prime, 33", "AKE_Send_Pairing_Info, 17"};
  expected.insert(expected.end(), locality.begin(), locality.end());
  Start();
  simhal::ClearCalls();
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_STREAM), kOk);
  EXPECT_EQ(Messages(), expected);

  expected = {"AKE_Init, 12", "AKE_Send_Cert, 534", "AKE_Stored_km, 33", "AKE_Send_H_prime, 33"};
  expected.insert(expected.end(), locality.begin(), locality.end());
  for (const char* message : {"RepeaterAuth_Send_ReceiverID_List, 37", "RepeaterAuth_Send_Ack, 17",
                              "RepeaterAuth_Stream_Manage, 8", "RepeaterAuth_Stream_Ready, 33"})
    expected.emplace_back(message);
  K2V_RHAL_HDCP2_SetRepeater(1);
  ASSERT_EQ(simhal::Apply("hdcp2 0 downstream 3 2"), "");
  simhal::ClearCalls();
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_STREAM), kOk);
  EXPECT_EQ(Messages(), expected) << "the source has stored the key; three ids of five bytes";
}

TEST(Hdcp2, EveryReasonCanBeInjectedAndEndsItsStep) {
  constexpr uint32_t kStream = K2V_HDCP2_STATE_STREAM;
  constexpr int kAnyNumber = -1;
  const struct {
    const char* command;
    uint32_t reason;
    int messages;  // sent before the failure, or kAnyNumber
    int tookMs;    // at least
  } kCases[] = {
      {"hdcp2 0 no-keys", K2V_HDCP2_REASON_NO_KEYS, 0, 0},
      {"plug 0 1920x1080p60", K2V_HDCP2_REASON_NO_SOURCE, 0, 0},
      {"after 0.02 s unplug 0", K2V_HDCP2_REASON_NO_SOURCE, kAnyNumber, 0},
      {"hdcp2 0 bad-cert", K2V_HDCP2_REASON_CERTIFICATE, 2, 10},
      {"hdcp2 0 revoked", K2V_HDCP2_REASON_REVOKED, 2, 10},
      {"hdcp2 0 silent", K2V_HDCP2_REASON_NO_ANSWER, 1, 100},
      {"hdcp2 0 late-cert", K2V_HDCP2_REASON_NO_ANSWER, 1, 100},
      {"hdcp2 0 wrong-h", K2V_HDCP2_REASON_H_PRIME, 4, 70},
      {"hdcp2 0 late-h", K2V_HDCP2_REASON_NO_ANSWER, 3, 1010},
      {"hdcp2 0 late-pairing", K2V_HDCP2_REASON_NO_ANSWER, 4, 270},
      {"hdcp2 0 wrong-l", K2V_HDCP2_REASON_L_PRIME, 5 + 16 * 2, 80 + 16 * 7},
      {"hdcp2 0 late-l", K2V_HDCP2_REASON_LOCALITY_TIME, 5 + 16, 80 + 16 * 20},
      {"hdcp2 0 wrong-ks", K2V_HDCP2_REASON_SESSION_KEY, 8, 87},
      {"hdcp2 0 wrong-v", K2V_HDCP2_REASON_V_PRIME, 9, 137},
      {"hdcp2 0 late-list", K2V_HDCP2_REASON_NO_ANSWER, 8, 3087},
      {"hdcp2 0 downstream 32 1", K2V_HDCP2_REASON_TOPOLOGY, 9, 137},
      {"hdcp2 0 downstream 1 5", K2V_HDCP2_REASON_TOPOLOGY, 9, 137},
      {"hdcp2 0 wrong-m", K2V_HDCP2_REASON_M_PRIME, 12, 147},
      {"hdcp2 0 late-m", K2V_HDCP2_REASON_NO_ANSWER, 11, 237},
  };
  Start();
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.command);
    // The source has not stored a key for the receiver.
    for (const char* command : {"plug 0 3840x2160p60 hdr", "hdcp2 0 ok", "hdcp2 0 downstream 31 4"})
      ASSERT_EQ(simhal::Apply(command), "");
    K2V_RHAL_HDCP2_EraseKeys();
    K2V_RHAL_HDCP2_LoadKeys();
    K2V_RHAL_HDCP2_SetRepeater(1);
    simhal::ClearCalls();
    ASSERT_EQ(simhal::Apply(c.command), "");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, kStream), kFail);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(c.tookMs));
    if (c.messages != kAnyNumber) {
      EXPECT_EQ(Messages().size(), static_cast<std::size_t>(c.messages));
    }
    const K2V_HDCP2_STATUS_T status = StatusOf(0);
    EXPECT_EQ(status.eState, K2V_HDCP2_STATE_FAILED);
    EXPECT_EQ(status.eReason, c.reason);
  }
}

TEST(Hdcp2, StoredKeyHasASeparateTimeLimit) {
  Start();
  ASSERT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_AKE), kOk);
  ASSERT_EQ(simhal::Apply("hdcp2 0 late-h 1"), "");
  simhal::ClearCalls();
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_AKE), kFail) << "250 ms are too late";
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(210));
  EXPECT_EQ(StatusOf(0).eReason, K2V_HDCP2_REASON_NO_ANSWER);
  EXPECT_EQ(Messages().back(), "AKE_Stored_km, 33");
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_AKE), kOk);
  EXPECT_EQ(StatusOf(0).bPaired, 1) << "the key was not invalidated";
}

TEST(Hdcp2, LargestAllowedListIsAccepted) {
  Start();
  K2V_RHAL_HDCP2_SetRepeater(1);
  ASSERT_EQ(simhal::Apply("hdcp2 0 downstream 31 4"), "");
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_STREAM), kOk);
  EXPECT_EQ(StatusOf(0).eState, K2V_HDCP2_STATE_STREAM);
}

TEST(Hdcp2, FaultOccursTheGivenNumberOfTimes) {
  Start();
  ASSERT_EQ(simhal::Apply("hdcp2 0 late-l 15"), "");
  ASSERT_EQ(simhal::Apply("hdcp2 0 downstream 2 1"), "");
  EXPECT_NE(simhal::State().find("port 0: idle, late-l 15 times, 2 devices on 1 levels downstream"),
            std::string::npos)
      << simhal::State();
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_LOCALITY), kOk) << "the 16th is in time";
  EXPECT_EQ(StatusOf(0).nLocalityUs, 7000u);
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_LOCALITY), kOk);
  ASSERT_EQ(simhal::Apply("hdcp2 0 wrong-h 1"), "");
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_AKE), kFail);
  EXPECT_EQ(K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_AKE), kOk);
  EXPECT_NE(simhal::Apply("hdcp2 0 downstream 3").find("expected PORT downstream DEVICES DEPTH"),
            std::string::npos);
  EXPECT_NE(simhal::Apply("hdcp2 0 wrong-h 0").find("invalid number of times '0'"),
            std::string::npos);
}

TEST(Hdcp2, BoardIsAccessibleWhileAnAuthenticationWaits) {
  Start();
  K2V_RHAL_HDCP2_SetRepeater(1);
  ASSERT_EQ(simhal::Apply("hdcp2 0 late-list"), "");
  std::thread authentication([] { K2V_RHAL_HDCP2_Authenticate(0, K2V_HDCP2_STATE_STREAM); });
  while (Messages().size() < 8) std::this_thread::yield();
  // The source waits three seconds for the list, but only while its cable is plugged in.
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetRxPortCnt(), 4);
  EXPECT_EQ(simhal::Apply("hdcp2 0 downstream 5 2"), "");
  EXPECT_EQ(simhal::Apply("unplug 0"), "");
  authentication.join();
  EXPECT_EQ(StatusOf(0).eReason, K2V_HDCP2_REASON_NO_SOURCE);
  EXPECT_NE(simhal::State().find("5 devices on 2 levels"), std::string::npos) << simhal::State();
}

TEST(Hdcp2, BoardKeepsItsKeys) {
  Start();
  K2V_HDCP2_KEY_INFO_T before{}, after{};
  K2V_RHAL_HDCP2_GetKeyInfo(&before);
  K2V_RHAL_HDCP2_EraseKeys();
  K2V_RHAL_HDCP2_LoadKeys();
  K2V_RHAL_HDCP2_GetKeyInfo(&after);
  EXPECT_TRUE(std::equal(std::begin(before.receiverId), std::end(before.receiverId),
                         std::begin(after.receiverId)));
  EXPECT_EQ(after.nVersion, 2);
  EXPECT_NE(simhal::Apply("hdcp2 0 broken").find("wrong-h"), std::string::npos);
  for (const char* range : {"0 0", "127 7"})
    EXPECT_EQ(simhal::Apply(std::string("hdcp2 0 downstream ") + range), "");
  for (const char* beyond : {"128 1", "1 8", "-1 1", "1"})
    EXPECT_NE(simhal::Apply(std::string("hdcp2 0 downstream ") + beyond), "") << beyond;
}

}  // namespace
