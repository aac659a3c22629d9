// HDCP 2 tests with the simulated HAL: verdicts and output if a receiver, a source or the HAL
// fails.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Hdcp2TestCase.h"
#include "Scripted.h"
#include "SimHal.h"
#include "UTHdcp2TestCase.h"
#include "k2v/hdcp2.h"

namespace {

using TestFunction = int (*)(char*);

scripted::Run PlayTest(TestFunction test, const std::string& answers = "0") {
  return scripted::Play(answers, [test] { return test(nullptr); });
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(Hdcp2, BringUpEndsWithAuthentication) {
  for (const TestFunction test :
       {Hdcp2TestCase::Hdcp2Test_Init, Hdcp2TestCase::Hdcp2Test_LoadKeys,
        Hdcp2TestCase::Hdcp2Test_VerifyKeys, Hdcp2TestCase::Hdcp2Test_AKE,
        Hdcp2TestCase::Hdcp2Test_LocalityCheck, Hdcp2TestCase::Hdcp2Test_SessionKeyExchange,
        Hdcp2TestCase::Hdcp2Test_ReceiverInfo, Hdcp2TestCase::Hdcp2Test_StreamManage}) {
    const auto run = PlayTest(test);
    EXPECT_EQ(run.result, 0) << run.output;
  }
  const auto run = PlayTest(Hdcp2TestCase::Hdcp2Test_Authenticate);
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(Contains(run.output, "state = authenticated\nreason = none\nreceiver id = "));
  EXPECT_TRUE(Contains(run.output,
                       "repeater = 0\nstream type = 0\nstored key used = 0\n"
                       "locality check = 7000 us\n"))
      << run.output;
}

TEST(Hdcp2, EachFaultFailsItsStep) {
  const struct {
    const char* command;
    TestFunction passes;  // the previous step
    TestFunction fails;
    const char* line;
  } kCases[] = {
      {"hdcp2 0 wrong-h", Hdcp2TestCase::Hdcp2Test_VerifyKeys, Hdcp2TestCase::Hdcp2Test_AKE,
       "HDCP2 authentication failed : H' is wrong\n"},
      {"hdcp2 0 silent", Hdcp2TestCase::Hdcp2Test_VerifyKeys, Hdcp2TestCase::Hdcp2Test_AKE,
       "HDCP2 authentication failed : no answer\n"},
      {"unplug 0", Hdcp2TestCase::Hdcp2Test_VerifyKeys, Hdcp2TestCase::Hdcp2Test_AKE,
       "HDCP2 authentication failed : no source with HDCP 2\n"},
      {"hdcp2 0 wrong-l", Hdcp2TestCase::Hdcp2Test_AKE, Hdcp2TestCase::Hdcp2Test_LocalityCheck,
       "HDCP2 authentication failed : L' is wrong\n"},
      {"hdcp2 0 late-l", Hdcp2TestCase::Hdcp2Test_AKE, Hdcp2TestCase::Hdcp2Test_LocalityCheck,
       "HDCP2 authentication failed : L' came too late\n"},
      {"hdcp2 0 bad-cert", Hdcp2TestCase::Hdcp2Test_LoadKeys, Hdcp2TestCase::Hdcp2Test_AKE,
       "HDCP2 authentication failed : signature of the certificate\n"},
      {"hdcp2 0 bad-cert", Hdcp2TestCase::Hdcp2Test_LoadKeys, Hdcp2TestCase::Hdcp2Test_VerifyKeys,
       "K2V_RHAL_HDCP2_VerifyKeys NG : -1\n"},
  };
  for (const auto& c : kCases) {
    simhal::Reset();
    ASSERT_EQ(simhal::Apply(c.command), "");
    EXPECT_EQ(PlayTest(c.passes).result, 0) << c.command;
    const auto run = PlayTest(c.fails);
    EXPECT_EQ(run.result, 1) << c.command;
    EXPECT_TRUE(run.output.ends_with(c.line)) << run.output;
    EXPECT_EQ(PlayTest(Hdcp2TestCase::Hdcp2Test_Authenticate).result, 1) << c.command;
  }
}

TEST(Hdcp2, PrintsTheReceiverIdOfTheKeys) {
  const auto run = PlayTest(Hdcp2TestCase::Hdcp2Test_LoadKeys);
  K2V_HDCP2_KEY_INFO_T info{};
  ASSERT_EQ(K2V_RHAL_HDCP2_GetKeyInfo(&info), K2V_RHAL_OK);
  std::string id;
  for (const uint8_t byte : info.receiverId) {
    id += "0123456789abcdef"[byte >> 4];
    id += "0123456789abcdef"[byte & 15];
  }
  EXPECT_TRUE(Contains(run.output, "receiver id = " + id + ", version ")) << run.output;
}

TEST(Hdcp2, LoadsNoKeysIntoAReceiverThatCannotBeRestarted) {
  simhal::Fail("K2V_RHAL_HDCP2_Initialize", -1);
  simhal::ClearCalls();
  EXPECT_EQ(PlayTest(Hdcp2TestCase::Hdcp2Test_AKE).result, 1);
  EXPECT_TRUE(simhal::Calls().back().starts_with("K2V_RHAL_HDCP2_Initialize("))
      << simhal::Calls().back();
}

TEST(Hdcp2, RejectsInvalidPorts) {
  for (const TestFunction test :
       {Hdcp2TestCase::Hdcp2Test_AKE, Hdcp2TestCase::Hdcp2Test_LocalityCheck,
        Hdcp2TestCase::Hdcp2Test_SessionKeyExchange, Hdcp2TestCase::Hdcp2Test_ReceiverInfo,
        Hdcp2TestCase::Hdcp2Test_StreamManage, Hdcp2TestCase::Hdcp2Test_Authenticate}) {
    for (const char* port : {"256", "-1", "65536"}) {
      const auto run = PlayTest(test, port);
      EXPECT_EQ(run.result, 1) << port;
      EXPECT_TRUE(run.output.ends_with(std::string("HDCP2 port NG : ") + port + '\n'));
    }
    const auto run = PlayTest(test, "4");
    EXPECT_EQ(run.result, 1);
    EXPECT_TRUE(Contains(run.output, " NG : -2\n")) << run.output;
  }
}

TEST(Hdcp2, UnpluggedReceiverIsNotAuthenticated) {
  EXPECT_EQ(PlayTest(Hdcp2TestCase::Hdcp2Test_Authenticate).result, 0);
  EXPECT_TRUE(
      Contains(PlayTest(Hdcp2TestCase::Hdcp2Test_ReceiverInfo).output, "state = authenticated\n"));
  for (const char* command : {"unplug 0", "plug 0 3840x2160p60 hdr"}) {
    simhal::Apply(command);
    EXPECT_TRUE(Contains(PlayTest(Hdcp2TestCase::Hdcp2Test_ReceiverInfo).output, "state = idle\n"))
        << command;
  }
}

TEST(Hdcp2, StreamTestResetsTheRepeaterFlagOnFailure) {
  PlayTest(Hdcp2TestCase::Hdcp2Test_Init);
  simhal::Fail("K2V_RHAL_HDCP2_Authenticate", -7);
  const auto run = PlayTest(Hdcp2TestCase::Hdcp2Test_StreamManage);
  EXPECT_EQ(run.result, 1);
  EXPECT_TRUE(Contains(run.output, "K2V_RHAL_HDCP2_Authenticate NG : -7\n"));
  EXPECT_EQ(simhal::Calls().back(), "K2V_RHAL_HDCP2_SetRepeater(0) = 0");
}

struct UnitTest {
  TestFunction test;
  const char* function;  // a function that the test depends on
};

constexpr UnitTest kUnitTests[] = {
    {UTHdcp2TestCase::UTHdcp2Test_Init, "K2V_RHAL_HDCP2_Initialize"},
    {UTHdcp2TestCase::UTHdcp2Test_Sha256, "K2V_RHAL_HDCP2_Sha256"},
    {UTHdcp2TestCase::UTHdcp2Test_HmacSha256, "K2V_RHAL_HDCP2_HmacSha256"},
    {UTHdcp2TestCase::UTHdcp2Test_AesCtr, "K2V_RHAL_HDCP2_AesCtr"},
    {UTHdcp2TestCase::UTHdcp2Test_RsaOaep, "K2V_RHAL_HDCP2_RsaOaepEncrypt"},
    {UTHdcp2TestCase::UTHdcp2Test_RsaOaep, "K2V_RHAL_HDCP2_RsaOaepDecrypt"},
    {UTHdcp2TestCase::UTHdcp2Test_RsaSignature, "K2V_RHAL_HDCP2_RsaVerify"},
    {UTHdcp2TestCase::UTHdcp2Test_Random, "K2V_RHAL_HDCP2_Random"},
    {UTHdcp2TestCase::UTHdcp2Test_KeyStore, "K2V_RHAL_HDCP2_EraseKeys"},
    {UTHdcp2TestCase::UTHdcp2Test_NullBuffers, "K2V_RHAL_HDCP2_GetStatus"},
    {UTHdcp2TestCase::UTHdcp2Test_WrongLengths, "K2V_RHAL_HDCP2_SetRevocationList"},
    {UTHdcp2TestCase::UTHdcp2Test_WithoutKeys, "K2V_RHAL_HDCP2_Authenticate"},
    {UTHdcp2TestCase::UTHdcp2Test_RevokedReceiver, "K2V_RHAL_HDCP2_SetRevocationList"},
};

TEST(UTHdcp2, DetectsFunctionsThatOnlyReportSuccess) {
  for (const auto& [test, function] : kUnitTests) {
    simhal::Reset();
    auto run = PlayTest(test);
    EXPECT_EQ(run.result, 0) << run.output;
    EXPECT_TRUE(run.output.ends_with("Result : Passed\n"));
    simhal::Fail(function, 0);
    run = PlayTest(test);
    EXPECT_EQ(run.result, 1) << function << '\n' << run.output;
    EXPECT_TRUE(run.output.ends_with("Result : Failed\n"));
  }
}

TEST(UTHdcp2, ReportsTheCodeOfAFailedCall) {
  simhal::Fail("K2V_RHAL_HDCP2_Sha256", -7);
  EXPECT_TRUE(Contains(PlayTest(UTHdcp2TestCase::UTHdcp2Test_Sha256).output,
                       "K2V_RHAL_HDCP2_Sha256 NG : -7\nSHA-256 known answer : NG\n"));
}

TEST(Hdcp2Keys, AreNotInTheTrace) {
  for (const auto& entry : kUnitTests) PlayTest(entry.test);
  PlayTest(Hdcp2TestCase::Hdcp2Test_Authenticate);
  for (const std::string& call : simhal::Calls()) EXPECT_LT(call.size(), 120u) << call;
}

}  // namespace
