// Picture-quality tests against the simulated HAL: the kinds of unit tests, and the adjusters with
// the operator's keys as a script.
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>
#include <vector>

#include "Scripted.h"
#include "SimHal.h"
#include "UTVpqRunners.h"
#include "UTVpqTestCase.h"
#include "VpqExtTestCase.h"
#include "VpqTestCase.h"

namespace {

using TestFunction = int (*)(char*);
using Lines = std::vector<std::string>;

scripted::Run PlayTest(TestFunction test, const std::string& keys = "") {
  simhal::ClearCalls();
  return scripted::Play(keys, [test] { return test(nullptr); });
}

std::string WithoutTraceLine(const std::string& output) {
  return output.substr(output.find("\033[m") + 3);
}

/// The numbers that a test printed, in order.
std::vector<std::string> PrintedNumbers(const std::string& output) {
  static const std::regex kNumber(" test : \\w+ = (-?\\d+)\n");
  return {std::sregex_token_iterator(output.begin(), output.end(), kNumber, 1), {}};
}

/// The arguments of a call in the trace, when all of them are numbers.
std::vector<std::string> NumbersOf(const std::string& call) {
  static const std::regex kNumbers("\\w+\\((-?\\d+(, -?\\d+)*)\\) = -?\\d+");
  std::smatch match;
  if (!std::regex_match(call, match, kNumbers)) return {};
  const std::string arguments = match[1];
  static const std::regex kNumber("-?\\d+");
  return {std::sregex_token_iterator(arguments.begin(), arguments.end(), kNumber), {}};
}

struct UnitTest {
  std::string name;
  TestFunction test;
};

const UnitTest kUnitTests[] = {
#define UTVPQ(name, run) {#name, UTVpqTestCase::UTVpq_##name},
#include "UTVpqTests.def"
#undef UTVPQ
};

/// The HAL function that a unit test calls: mostly the one it is named after.
std::string FunctionOf(const std::string& name) {
  static const std::pair<const char*, const char*> kOthers[] = {
      {"RHAL_VPQ_SetSaturation", "RHAL_VPQ_SetContrast"},
      {"RHAL_VPQ_SetDolbyContrast", "RHAL_VPQ_SetDolbyColor"},
      {"RHAL_VPQ_SetGamma_TableSize", "RHAL_VPQEX_SetGammaCurve"},
      {"RHAL_VPQ_SetBRIGHTNESS_LUT_OETF", "RHAL_VPQEX_SetCurve4HDR"},
      {"RHAL_VPQEX_GetDynamicRange", "RHAL_VPQEX_GetHDRDolbyStatus"},
      {"RHAL_VPQ_GetPixelInfo_QN771", "RHAL_VPQEX_GetPixelinfo"},
      {"RHAL_VPQ_MEMC_SetLevel", "RHAL_VPQ_MEMC_setLevel"},
  };
  for (const auto& [test, function] : kOthers) {
    if (name == test) return std::string("K2V_") + function;
  }
  return "K2V_" + name;
}

TEST(UTVpq, EveryRowReachesItsFunctionWithTheNumbersThatItPrints) {
  for (const auto& [name, test] : kUnitTests) {
    const auto run = PlayTest(test);
    EXPECT_EQ(run.result, 0);
    EXPECT_TRUE(
        run.output.starts_with("\n\033[1;31m muro/TestCase/UnitTest/vpq/src/"
                               "UTVpqTestCase.cpp,UTVpq_" +
                               name + " ,"))
        << run.output;
    const Lines calls = simhal::Calls();
    EXPECT_EQ(calls.empty(), name == "Test") << name;
    std::vector<std::string> numbers;
    for (const std::string& call : calls) {
      EXPECT_EQ(call.substr(0, call.find('(')), FunctionOf(name));
      for (const std::string& number : NumbersOf(call)) numbers.push_back(number);
    }
    if (name.ends_with("Force24to48")) continue;  // its argument is fixed and not printed
    EXPECT_EQ(numbers, PrintedNumbers(run.output)) << name;
  }
}

TEST(UTVpq, RecordsOfSmallestAndLargestNumbersAreTaken) {
  std::set<std::string> tested;
  for (const auto& [name, test] : kUnitTests) {
    const auto run = PlayTest(test);
    if (run.output.find("min value test\n") == std::string::npos) continue;
    tested.insert(name);
    const Lines calls = simhal::Calls();
    ASSERT_EQ(calls.size(), 4u) << name;
    EXPECT_TRUE(calls[0].ends_with(" = 0")) << calls[0];
    EXPECT_TRUE(calls[1].ends_with(" = 0")) << calls[1];
    EXPECT_TRUE(calls[3].ends_with("(NULL) = -2")) << calls[3];
  }
  EXPECT_EQ(tested.size(), 47u);
}

TEST(UTVpq, EachKindPrintsItsLinesInTheOrderOfItsCalls) {
  auto run = PlayTest(UTVpqTestCase::UTVpq_RHAL_VPQEX_Init);
  EXPECT_EQ(WithoutTraceLine(run.output),
            "No parameters need to be tested.\nboundary test : repeat call\n");
  EXPECT_EQ(simhal::Calls().size(), 2u);

  run = PlayTest(UTVpqTestCase::UTVpq_RHAL_VPQ_GetPicMode);
  EXPECT_EQ(WithoutTraceLine(run.output), "Null Pointer Check : pPicMode = NULL\n");
  EXPECT_EQ(simhal::Calls(), (Lines{"K2V_RHAL_VPQ_GetPicMode(NULL) = -2"}));

  run = PlayTest(UTVpqTestCase::UTVpq_RHAL_VPQ_SetBlackPatternOutput);
  EXPECT_EQ(WithoutTraceLine(run.output),
            "min value test : isBlackPattern = 0\nmax value test : isBlackPattern = 1\n"
            "boundary test : isBlackPattern = 2\n");

  run = PlayTest(UTVpqTestCase::UTVpq_RHAL_VPQEX_SetSGamma);
  const auto numbers = PrintedNumbers(run.output);
  ASSERT_EQ(numbers.size(), 5u);
  EXPECT_EQ((Lines{numbers[0], numbers[1], numbers[3], numbers[4]}), (Lines{"-3", "3", "-4", "4"}));

  run = PlayTest(UTVpqTestCase::UTVpq_RHAL_VPQ_SetColorTempExtend);
  EXPECT_EQ(WithoutTraceLine(run.output),
            "min value test\nmax value test\nrandom value test\n"
            "Null Pointer Check : pColorTempExtend = NULL\n");
  EXPECT_EQ(simhal::Calls()[1],
            "K2V_RHAL_VPQ_SetColorTempExtend({nRedGain=1023, nGreenGain=1023, nBlueGain=1023, "
            "nRedOffset=1023, nGreenOffset=1023, nBlueOffset=1023}) = 0");

  EXPECT_EQ(WithoutTraceLine(PlayTest(UTVpqTestCase::UTVpq_Test).output),
            "Just test basic api call.\n");
}

TEST(UTVpq, OnlyThePictureModesRandomNumberStaysInRange) {
  for (int i = 0; i < 200; ++i) {
    const auto run = scripted::Play("", [] {
      utvpq::CallWithRangeKept("PicMode", 0, 13, K2V_RHAL_VPQ_SetPicMode, 14);
      return 0;
    });
    const int number = std::stoi(PrintedNumbers(run.output)[2]);
    ASSERT_TRUE(number >= 0 && number <= 13);
  }
  PlayTest(UTVpqTestCase::UTVpq_RHAL_VPQ_SetPicMode);
  EXPECT_TRUE(simhal::Calls()[2].ends_with(" = 0")) << simhal::Calls()[2];
  EXPECT_EQ(simhal::Calls()[3], "K2V_RHAL_VPQ_SetPicMode(14) = -2");
}

TEST(RecordFields, KeepWidthAndSign) {
  K2V_VPQ_HDR_GAMUT_MATRIX_T matrix{};
  const k2v::RecordField& field = k2v::FieldsOf(&matrix)[0];
  k2v::SetField(&matrix, field, -16384, 8);
  EXPECT_EQ(matrix.nMatrix[8], -16384);
  EXPECT_EQ(k2v::GetField(&matrix, field, 8), -16384);
  k2v::SetField(&matrix, field, 0x12345678, 0);
  EXPECT_EQ(matrix.nMatrix[0], 0x5678);
  EXPECT_EQ(matrix.nMatrix[1], 0);
}

const std::string kBrightnessKeys =
    "Use '0' '1' to swith 'Value +' 'Value -' brightness\nUse 'q' to exit\n"
    "Use '>' to test Max Value, '<' to test Min Value, '?' to test Random Value\n";

TEST(RangeAdjuster, StepsStopAtBothEndsAndForeignKeysDoNothing) {
  const auto run =
      PlayTest(VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_SetBrightness, "0>0x1\n,1.<q0");
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(run.output, "VPQ_FunctionTest_HAL_VPQ_SetBrightness\n" + kBrightnessKeys +
                            "Set brightness = 51\n" + kBrightnessKeys +
                            "Set Max brightness =100\n" + kBrightnessKeys +
                            "Set brightness = 100\n" + kBrightnessKeys + "Set brightness = 99\n" +
                            kBrightnessKeys + "Set Min brightness = 0\n" + kBrightnessKeys +
                            "Set brightness = 0\n" + kBrightnessKeys + "Set Max brightness =100\n" +
                            kBrightnessKeys + "Set Min brightness = 0\n" + kBrightnessKeys);
  const Lines calls = simhal::Calls();
  ASSERT_EQ(calls.size(), 10u);
  EXPECT_EQ(calls[0], "K2V_RHAL_VPQ_GetBrightness({50}) = 0");
  EXPECT_EQ(calls[1], "K2V_RHAL_VPQ_SetBrightness(50) = 0");
  EXPECT_EQ(calls[9], "K2V_RHAL_VPQ_SetBrightness(0) = 0");
}

TEST(RangeAdjuster, RandomValuesAreInRange) {
  PlayTest(VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_SetBrightness, std::string(300, '?') + "Q");
  EXPECT_EQ(simhal::Calls().size(), 302u);
  for (const std::string& call : simhal::Calls()) EXPECT_TRUE(call.ends_with(" = 0")) << call;
}

TEST(RangeAdjuster, EndsWhenTheHalRefuses) {
  simhal::Fail("K2V_RHAL_VPQ_SetBrightness", -7, 2);
  auto run = PlayTest(VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_SetBrightness, "0");
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(run.output.ends_with("Set brightness = 51\n"));
  simhal::Fail("K2V_RHAL_VPQ_SetBrightness", -7);
  run = PlayTest(VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_SetBrightness);
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(run.output, "VPQ_FunctionTest_HAL_VPQ_SetBrightness\n");
}

TEST(LevelMenu, TakesTheLevelsOfItsMenuOnly) {
  auto run = PlayTest(VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_SetFleshTone, "6x4q");
  const std::string menu =
      "Choose the fleshtone level\n0=off, 1=low, 2=mid, 3=high, 4=auto, 5=butt\n"
      "Use 'q' to exit\n";
  EXPECT_EQ(run.output, "VPQ_FunctionTest_HAL_VPQ_SetFleshTone\n" + menu +
                            "Set fleshtone level is auto\n" + menu);
  EXPECT_EQ(simhal::Calls(),
            (Lines{"K2V_RHAL_VPQ_GetFleshTone({0}) = 0", "K2V_RHAL_VPQ_SetFleshTone(0) = 0",
                   "K2V_RHAL_VPQ_SetFleshTone(4) = 0"}));
  run = PlayTest(VpqExtTestCase::VPQ_FunctionTest_HAL_VPQEX_SetSGamma, "06q");
  EXPECT_EQ(simhal::Calls()[2], "K2V_RHAL_VPQEX_SetSGamma(-3) = 0");
  EXPECT_EQ(simhal::Calls()[3], "K2V_RHAL_VPQEX_SetSGamma(3) = 0");
}

TEST(Getters, ShowTheValueWithItsLegendForFourSeconds) {
  auto run = PlayTest(VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_GetBrightness);
  EXPECT_EQ(run.output, "VPQ_FunctionTest_HAL_VPQ_GetBrightness\nBrightness = 50\n");
  EXPECT_EQ(scripted::Waits(), (std::vector<unsigned long>{4'000'000}));
  run = PlayTest(VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_GetColorGain);
  EXPECT_EQ(run.output,
            "VPQ_FunctionTest_HAL_VPQ_GetColorGain\n"
            "colorgain level: 0=off, 1=low, 2=mid, 3=high, 4=auto, 5=butt\n"
            "colorgain level = 0\n");
  simhal::Fail("K2V_RHAL_VPQ_GetHue", -7);
  run = PlayTest(VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_GetHue);
  EXPECT_EQ(run.output, "VPQ_FunctionTest_HAL_VPQ_GetHue\nHue = 0\n");
  EXPECT_EQ(run.result, 0);
  run = PlayTest(VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_GetPQModule);
  EXPECT_TRUE(run.output.ends_with("\neModule = 0\nbEnable = 0\n")) << run.output;
}

TEST(RecordAdjuster, HasAKeyForEachFieldInEachDirection) {
  const auto run = PlayTest(VpqTestCase::VPQ_FunctionTest_HAL_VPQ_SetPictureCtrl, "0aw3ez<.q");
  EXPECT_TRUE(run.output.starts_with(
      " VPQ_FunctionTest_HAL_VPQ_SetPictureCtrl \n"
      "Enter '0' '1' '2' '3' to increase con bri color tint value\n"
      "Enter 'p' 'a' 'w' 'e' to decrease con bri color tint value\n"
      "Use 'q' to exit\n"
      "Use '>' to test Max Value, '<' to test Min Value, '?' to test Random Value\n"
      "Set con = 51\n"))
      << run.output;
  const std::string call = "K2V_RHAL_VPQ_SetPictureCtrl";
  EXPECT_EQ(simhal::Calls(),
            (Lines{call + "({nContrast=50, nBrightness=50, nColor=50, nTint=50}) = 0",
                   call + "({nContrast=51, nBrightness=50, nColor=50, nTint=50}) = 0",
                   call + "({nContrast=51, nBrightness=49, nColor=50, nTint=50}) = 0",
                   call + "({nContrast=51, nBrightness=49, nColor=49, nTint=50}) = 0",
                   call + "({nContrast=51, nBrightness=49, nColor=49, nTint=51}) = 0",
                   call + "({nContrast=51, nBrightness=49, nColor=49, nTint=50}) = 0",
                   call + "({nContrast=0, nBrightness=0, nColor=0, nTint=0}) = 0",
                   call + "({nContrast=100, nBrightness=100, nColor=100, nTint=100}) = 0"}));
}

TEST(RecordAdjuster, EndsWhenTheHalRefusesAndStaysInRange) {
  simhal::Fail("K2V_RHAL_VPQ_SetOd", -7, 3);
  auto run = PlayTest(VpqTestCase::VPQ_FunctionTest_HAL_VPQ_SetOd, "00");
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(simhal::Calls().size(), 3u);
  PlayTest(VpqTestCase::VPQ_FunctionTest_HAL_VPQ_SetIREInnerPattern,
           std::string(100, '?') + "0000pppp>1<aq");
  for (const std::string& call : simhal::Calls()) EXPECT_TRUE(call.ends_with(" = 0")) << call;
}

TEST(ColorManagement, KeepsTheOffsetsOfEachRegion) {
  PlayTest(VpqTestCase::VPQ_FunctionTest_HAL_VPQ_SetColorManagement, "10w1pq");
  const Lines calls = simhal::Calls();
  ASSERT_EQ(calls.size(), 6u);
  EXPECT_NE(calls[5].find("nHueGain=[128 127 128 128 128 128 128 128 128], "
                          "nSaturationGain=[129 129 128 128 128 128 128 128 128]"),
            std::string::npos)
      << calls[5];
  PlayTest(VpqTestCase::VPQ_FunctionTest_HAL_VPQ_SetPreferredColor, "02q");
  EXPECT_NE(simhal::Calls()[2].find("nHueGain=[128 134 128 128 128 128 134 128 128]"),
            std::string::npos)
      << simhal::Calls()[2];
}

}  // namespace
