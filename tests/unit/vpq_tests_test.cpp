// Picture-quality tests with the simulated HAL: the kinds of unit tests, and the adjusters; the
// operator's keys are scripted.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Expected.h"
#include "ModuleList.h"
#include "Remarks.h"
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

/// The arguments of a call in the trace, if all of them are numbers.
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

TEST(UTVpq, EveryRowPassesTheNumbersThatItPrints) {
  for (const auto& [name, test] : kUnitTests) {
    const auto run = PlayTest(test);
    EXPECT_EQ(run.result, 0);
    const Lines calls = simhal::Calls();
    EXPECT_EQ(calls.empty(), name == "Test") << name;
    Lines numbers;
    for (const std::string& call : calls) {
      for (const std::string& number : NumbersOf(call)) numbers.push_back(number);
    }
    if (name.ends_with("Force24to48")) continue;  // its argument is fixed and not printed
    EXPECT_EQ(numbers, PrintedNumbers(run.output)) << name;
  }
}

/// The limits that a test of one setting prints, and the numbers beyond them that it tries.
struct Limits {
  int min;
  int max;
  std::vector<int> beyond;
};

std::optional<Limits> LimitsIn(const std::string& output) {
  static const std::regex kMin("(?:min value test : \\w+|Set Min .*) = ?(-?\\d+)\n");
  static const std::regex kMax("(?:max value test : \\w+|Set Max .*) = ?(-?\\d+)\n");
  static const std::regex kBeyond("boundary test : \\w+ = (-?\\d+)\n");
  std::smatch min, max;
  if (!std::regex_search(output, min, kMin) || !std::regex_search(output, max, kMax)) return {};
  Limits limits = {std::stoi(min[1]), std::stoi(max[1]), {}};
  for (std::sregex_iterator at(output.begin(), output.end(), kBeyond), end; at != end; ++at)
    limits.beyond.push_back(std::stoi(at->str(1)));
  return limits;
}

/// Expects that the HAL accepts both limits and rejects the numbers above and below them, except
/// for a number that the test skips before the one that it tries.
void ExpectLimitsOfTheHal(const std::string& name, const Limits& limits,
                          const std::string& function) {
  const auto set = reinterpret_cast<int (*)(int32_t)>(dlsym(RTLD_DEFAULT, function.c_str()));
  ASSERT_NE(set, nullptr) << function;
  EXPECT_EQ(set(limits.min), 0) << name;
  EXPECT_EQ(set(limits.max), 0) << name;
  EXPECT_NE(set(limits.min - 1), 0) << name;
  const bool leavesOneOut = std::ranges::find(limits.beyond, limits.max + 2) != limits.beyond.end();
  EXPECT_NE(set(limits.max + (leavesOneOut ? 2 : 1)), 0) << name;
  for (const int number : limits.beyond) EXPECT_NE(set(number), 0) << name << ' ' << number;
}

TEST(PictureQuality, TestedLimitsMatchTheHal) {
  int settings = 0;
  for (const char* module : {"UTVpqModule", "VpqExtModule", "VpqModule"}) {
    const auto entry = std::ranges::find(ModuleList(), std::string_view(module),
                                         [](const ModuleEntry& e) { return e.className; });
    for (const auto& row : entry->instance()->Tests()) {
      simhal::ClearCalls();
      const auto run = scripted::Play("><q", [&row] { return row->Execute(); });
      const auto limits = LimitsIn(run.output);
      const std::string last = simhal::Calls().empty() ? "" : simhal::Calls().back();
      if (!limits || NumbersOf(last).size() != 1) continue;
      ++settings;
      // This test tries only the first of the modes.
      if (last.find("SetDolbyHdrPicMode") != std::string::npos) continue;
      ExpectLimitsOfTheHal(row->getDescription(), *limits, last.substr(0, last.find('(')));
    }
  }
  EXPECT_GT(settings, 85);
}

/// Expects that the table contains all fields of a record: only padding lies between them.
template <typename Record>
void ExpectAllFields(const char* name) {
  const auto alignedTo = [](std::size_t at, std::size_t width) {
    return (at + width - 1) / width * width;
  };
  std::size_t end = 0;
  for (const k2v::RecordField& field : k2v::RecordFields<Record>::table) {
    EXPECT_EQ(field.offset, alignedTo(end, field.width)) << name << ": before " << field.name;
    end = field.offset + field.count * field.width;
  }
  EXPECT_EQ(sizeof(Record), alignedTo(end, alignof(Record))) << name;
}

/// Expects that a record of the smallest values is zero, field by field.
void ExpectZeros(const char* name, std::size_t bytes, std::span<const k2v::RecordField> fields) {
  std::vector<char> record(bytes, '\xFF');
  utvpq::Fill(record.data(), fields, utvpq::Filling::kMinimum);
  for (const k2v::RecordField& field : fields) {
    for (std::size_t i = 0; i < field.count; ++i) {
      EXPECT_EQ(k2v::GetField(record.data(), field, i), 0) << name << '.' << field.name;
    }
  }
}

TEST(RecordFields, CoverTheirRecordAndHaveAMinimumOfZero) {
#define RANGES_OF(record)           \
  ExpectAllFields<record>(#record); \
  ExpectZeros(#record, sizeof(record), k2v::RecordFields<record>::table);
#define RANGE(field, min, max)
#define MATRIX(field, min, max)
#define RANGES_END
#include "TestCase/sic_video/VpqRanges.def"
  PlayTest(UTVpqTestCase::UTVpq_RHAL_VPQ_SetColorTemp);
  EXPECT_EQ(simhal::Calls()[0],
            "K2V_RHAL_VPQ_SetColorTemp({nRedGain=0, nGreenGain=0, nBlueGain=0, nRedOffset=0, "
            "nGreenOffset=0, nBlueOffset=0}) = 0");
  PlayTest(UTVpqTestCase::UTVpq_RHAL_VPQ_SetColorGamut);
  EXPECT_EQ(simhal::Calls()[0],
            "K2V_RHAL_VPQ_SetColorGamut({eGamut=0, nMatrix=[0 0 0 0 0 0 0 0 0]}) = 0");
}

TEST(UTVpq, RecordsOfSmallestAndLargestNumbersAreAccepted) {
  std::set<std::string> tested;
  std::string largest;
  for (const auto& [name, test] : kUnitTests) {
    const auto run = PlayTest(test);
    if (run.output.find("min value test\n") == std::string::npos) continue;
    tested.insert(name);
    const Lines calls = simhal::Calls();
    ASSERT_EQ(calls.size(), 4u) << name;
    EXPECT_TRUE(calls[0].ends_with(" = 0")) << calls[0];
    EXPECT_TRUE(calls[1].ends_with(" = 0")) << calls[1];
    EXPECT_TRUE(calls[3].ends_with("(NULL) = -2")) << calls[3];
    largest += calls[1] + '\n';
  }
  EXPECT_EQ(tested.size(), 47u);
  EXPECT_TRUE(test::IsAsExpected("rows/UTVpqModule.largest.txt", largest));
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

Lines remarks;

TEST(UTVpq, RemarksOnErrorsForValuesWithinTheRange) {
  SetRemarkListener([](const std::string& text) { remarks.push_back(text); });
  PlayTest(UTVpqTestCase::UTVpq_RHAL_VPQ_SetNR);
  EXPECT_EQ(remarks, Lines()) << "rejecting 6 and random numbers is correct";
  simhal::Fail("K2V_RHAL_VPQ_SetNR", -7, 2);
  const auto run = PlayTest(UTVpqTestCase::UTVpq_RHAL_VPQ_SetNR);
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(remarks, Lines{"max value 4 answered -7, which this test does not judge"});
  EXPECT_EQ(run.output.find("-7"), std::string::npos);
}

TEST(PictureQuality, RandomNumbersAreSeededWithTheTime) {
  const std::string call = "K2V_RHAL_VPQ_";
  const auto numbers = [](int count, int from, int values) {
    std::string text;
    for (int i = 0; i < count; ++i)
      text.append(i == 0 ? "" : ", ").append(std::to_string(from + std::rand() % values));
    return text;
  };
  constexpr int kAny = RAND_MAX;  // none of these seeds produces the largest number
  const struct {
    TestFunction test;
    const char* keys;
    std::size_t call;
    std::function<std::string()> expected;
  } kTests[] = {
      {UTVpqTestCase::UTVpq_RHAL_VPQ_SetNR, "", 2,
       [&] { return "SetNR(" + numbers(1, 0, kAny) + ") = -2"; }},
      {UTVpqTestCase::UTVpq_RHAL_VPQ_SetPicMode, "", 2,
       [&] { return "SetPicMode(" + numbers(1, 0, 14) + ") = 0"; }},
      {UTVpqTestCase::UTVpq_RHAL_VPQ_SetColorGain, "", 0,
       [&] { return "SetColorGain(" + numbers(3, 0, kAny) + ") = -2"; }},
      {UTVpqTestCase::UTVpq_RHAL_VPQ_SetClearWhite, "", 2,
       [&] {
         const std::string level = numbers(1, 0, 256);
         return "SetClearWhite({nLevel=" + level + ", nThreshold=" + numbers(1, 0, 256) + "}) = -2";
       }},
      {VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_SetBrightness, "??q", 3,
       [&] { return numbers(1, 1, 100), "SetBrightness(" + numbers(1, 1, 100) + ") = 0"; }},
      {VpqTestCase::VPQ_FunctionTest_HAL_VPQ_SetColorGain, "?q", 1,
       [&] { return "SetColorGain(" + numbers(3, 0, 1024) + ") = 0"; }},
  };
  for (const std::time_t now : {1, 1'000'000'000}) {
    scripted::StopClock(now);
    for (const auto& t : kTests) {
      PlayTest(t.test, t.keys);
      std::srand(static_cast<unsigned>(now));
      EXPECT_EQ(simhal::Calls().at(t.call), call + t.expected());
    }
  }
}

TEST(PictureQuality, AdjustersStartWithTheCurrentOrANeutralValue) {
  for (const char* function : {"K2V_RHAL_VPQ_GetBrightness", "K2V_RHAL_VPQEX_GetSGamma"})
    simhal::Fail(function, -7);  // the current value cannot be read
  K2V_RHAL_VPQ_SetHue(73);
  const struct {
    TestFunction test;
    const char* call;
  } kStarts[] = {
      {VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_SetHue, "VPQ_SetHue(73) = 0"},
      {VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_SetBrightness, "VPQ_SetBrightness(50) = 0"},
      {VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_SetPanelBL, "VPQ_SetPanelBL(50) = 0"},
      {VpqTestCase::VPQ_FunctionTest_HAL_VPQ_LED_LDSetLUT, "VPQ_LED_LDSetLUT(127) = 0"},
      {VpqExtTestCase::VPQ_FunctionTest_HAL_VPQEX_SetSGamma, "VPQEX_SetSGamma(-3) = 0"},
      {VpqTestCase::VPQ_FunctionTest_HAL_VPQ_SetFilmMode, "VPQ_SetFilmMode(0, 0) = 0"},
      {VpqTestCase::VPQ_FunctionTest_HAL_VPQ_SetColorGain, "VPQ_SetColorGain(512, 512, 512) = 0"},
      {VpqTestCase::VPQ_FunctionTest_HAL_VPQ_SetIREInnerPattern,
       "VPQ_SetIREInnerPattern(1, 512, 512, 512) = 0"},
      {VpqTestCase::VPQ_FunctionTest_HAL_VPQ_LED_Initialize, "VPQ_LED_Initialize(0, 0) = 0"},
      {VpqTestCase::VPQ_FunctionTest_HAL_VPQ_LED_LDCtrlDemoMode,
       "VPQ_LED_LDCtrlDemoMode(0, 1) = 0"},
      {VpqTestCase::VPQ_FunctionTest_HAL_VPQ_SetFreshContrast,
       "VPQ_SetFreshContrast({nLevel=0, nBlackGain=128, nWhiteGain=128}) = 0"},
  };
  for (const auto& start : kStarts) {
    PlayTest(start.test, "q");
    EXPECT_EQ(simhal::Calls().back(), std::string("K2V_RHAL_") + start.call);
  }
}

const std::string kBrightnessKeys =
    "Use '0' '1' to swith 'Value +' 'Value -' brightness\nUse 'q' to exit\n"
    "Use '>' to test Max Value, '<' to test Min Value, '?' to test Random Value\n";

TEST(RangeAdjuster, StepsStopAtBothLimitsAndUnknownKeysAreIgnored) {
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

TEST(RangeAdjuster, EndsIfTheHalReturnsAnError) {
  simhal::Fail("K2V_RHAL_VPQ_SetBrightness", -7, 2);
  auto run = PlayTest(VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_SetBrightness, "0");
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(run.output.ends_with("Set brightness = 51\n"));
  simhal::Fail("K2V_RHAL_VPQ_SetBrightness", -7);
  run = PlayTest(VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_SetBrightness);
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(run.output, "VPQ_FunctionTest_HAL_VPQ_SetBrightness\n");
}

TEST(LevelMenu, AcceptsOnlyTheLevelsOfItsMenu) {
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
  K2V_RHAL_VPQEX_SetSGamma(-2);
  run = PlayTest(VpqExtTestCase::VPQ_FunctionTest_HAL_VPQEX_GetSGamma);
  EXPECT_EQ(run.output,
            "VPQ_FunctionTest_HAL_VPQEX_GetSGamma\n"
            "SGamma level: -3=-3, -2=-2, -1=-1, 0=0, 1=1, 2=2, 3=3\nSGamma level = -2\n");
  run = PlayTest(VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_GetPQModule);
  EXPECT_TRUE(run.output.ends_with("\neModule = 0\nbEnable = 0\n")) << run.output;
  run = PlayTest(VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_GetHistogram);
  std::string bins;
  for (std::size_t i = 0; i < std::size(K2V_VPQ_HISTOGRAM_T{}.nBin); ++i)
    bins += "nBin[" + std::to_string(i) + "] = 0\n";
  const std::size_t begin = run.output.find("nBin[");
  EXPECT_EQ(run.output.substr(begin, run.output.rfind("nBin[") - begin),
            bins.substr(0, bins.rfind("nBin[")));
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

TEST(RecordAdjuster, EndsIfTheHalReturnsAnErrorAndStaysInRange) {
  simhal::Fail("K2V_RHAL_VPQ_SetOd", -7, 3);
  auto run = PlayTest(VpqTestCase::VPQ_FunctionTest_HAL_VPQ_SetOd, "00");
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(simhal::Calls().size(), 3u);
  PlayTest(VpqTestCase::VPQ_FunctionTest_HAL_VPQ_SetIREInnerPattern,
           std::string(100, '?') + "0000pppp>1<aq");
  for (const std::string& call : simhal::Calls()) EXPECT_TRUE(call.ends_with(" = 0")) << call;
}

TEST(RecordAdjuster, StartsAtNeutralAndCanReturnToIt) {
  const std::string call = "K2V_RHAL_VPQ_SetColorTempExtend({nRedGain=";
  PlayTest(VpqExtTestCase::VPQ_FunctionTest_HAL_VPQ_SetColorTempExtend,
           ">" + std::string(52, 'p') + "<" + std::string(52, '0') + "q");
  const Lines calls = simhal::Calls();
  EXPECT_EQ(calls[0], call +
                          "512, nGreenGain=512, nBlueGain=512, nRedOffset=512, nGreenOffset=512, "
                          "nBlueOffset=512}) = 0");
  EXPECT_TRUE(calls[2].starts_with(call + "1022,")) << calls[2];
  EXPECT_TRUE(calls[53].starts_with(call + "512,")) << calls[53];
  EXPECT_TRUE(calls[55].starts_with(call + "2,")) << calls[55];
  EXPECT_TRUE(calls[106].starts_with(call + "512,")) << calls[106];
}

TEST(RecordAdjuster, MatricesStartAsIdentityAndAreSetNumberByNumber) {
  const auto run = PlayTest(VpqTestCase::VPQ_FunctionTest_HAL_VPQ_SetColorGamut,
                            "00a2<" + std::string(80, '1') + "q");
  const std::string call = "K2V_RHAL_VPQ_SetColorGamut({eGamut=";
  const Lines calls = simhal::Calls();
  EXPECT_EQ(calls[0], call + "0, nMatrix=[4096 0 0 0 4096 0 0 0 4096]}) = 0");
  EXPECT_EQ(calls[4], call + "2, nMatrix=[3840 256 0 0 4096 0 0 0 4096]}) = 0");
  EXPECT_TRUE(calls.back().starts_with(call + "0, nMatrix=[4096 -16384 ")) << calls.back();
  EXPECT_NE(run.output.find("Enter '0' '1' '2' '3' '4' '5' '6' '7' '8' '9' to increase eGamut m11 "
                            "m12 m13 m21 m22 m23 m31 m32 m33 value\n"),
            std::string::npos);
}

/// Arguments of the last call.
std::string LastArguments() {
  const std::string call = simhal::Calls().back();
  return call.substr(call.find('('));
}

TEST(IdentityTables, AreStraightLines) {
  K2V_VPQ_GAMMA_CURVE_T curve{};
  curve.nTableSize = 1024;
  for (unsigned i = 0; i < 1024; ++i) curve.nCurve[i] = static_cast<uint16_t>(i * 4095 / 1023);
  K2V_RHAL_VPQEX_SetGammaCurve(&curve);
  const std::string gamma = LastArguments();
  for (const TestFunction test : {VpqExtTestCase::VPQ_FunctionTest_HAL_VPQEX_SetGammaCurve,
                                  UTVpqTestCase::UTVpq_RHAL_VPQ_SetMagicGamma_QN771}) {
    PlayTest(test);
    EXPECT_EQ(LastArguments(), gamma);
  }

  K2V_VPQ_HDR_3D_LUT_T cube{};
  std::size_t point = 0;
  for (unsigned red = 0; red < 9; ++red) {
    for (unsigned green = 0; green < 9; ++green) {
      for (unsigned blue = 0; blue < 9; ++blue, ++point) {
        cube.nRed[point] = static_cast<uint16_t>(red * 1023 / 8);
        cube.nGreen[point] = static_cast<uint16_t>(green * 1023 / 8);
        cube.nBlue[point] = static_cast<uint16_t>(blue * 1023 / 8);
      }
    }
  }
  K2V_RHAL_VPQ_HDR_SetLUT(&cube);
  const std::string lut = LastArguments();
  PlayTest(UTVpqTestCase::UTVpq_RHAL_VPQ_HDR_SetLUT);
  EXPECT_EQ(LastArguments(), lut);
}

/// The offsets printed last, by name.
std::map<std::string, int> PrintedOffsets(const std::string& output) {
  static const std::regex kOffset("(saturation|hue|brightness) = (-?\\d+)");
  std::map<std::string, int> offsets;
  for (std::sregex_iterator at(output.begin(), output.end(), kOffset), end; at != end; ++at) {
    offsets[at->str(1)] = std::stoi(at->str(2));
  }
  return offsets;
}

/// The three gains of a region in a call, as offsets from neutral.
std::map<std::string, int> SentOffsets(const std::string& call, std::size_t region) {
  std::map<std::string, int> offsets;
  for (const auto& [name, field] : {std::pair{"saturation", "nSaturationGain=["},
                                    {"hue", "nHueGain=["},
                                    {"brightness", "nBrightnessGain=["}}) {
    const std::size_t at = call.find(field);
    EXPECT_NE(at, std::string::npos) << call;
    std::istringstream gains(call.substr(at + std::string(field).size()));
    int gain = 0;
    for (std::size_t i = 0; i <= region; ++i) gains >> gain;
    offsets[name] = gain - 128;
  }
  return offsets;
}

TEST(ColorManagement, SendsThePrintedValuesAndKeepsEachRegion) {
  const TestFunction test = VpqTestCase::VPQ_FunctionTest_HAL_VPQ_SetColorManagement;
  const std::map<std::string, int> kept = {{"saturation", 1}, {"hue", -1}, {"brightness", 0}};
  const struct {
    const char* keys;
    std::size_t region;
    std::map<std::string, int> offsets;  // empty for any
  } kStarts[] = {
      {"1w", 0, kept},
      {"", 0, kept},
      {"0>", 1, {{"saturation", 50}, {"hue", 50}, {"brightness", 50}}},
      {"00<3", 2, {{"saturation", -50}, {"hue", -50}, {"brightness", -49}}},
      {"000?", 3, {}},
      {"0", 1, {{"saturation", 50}, {"hue", 50}, {"brightness", 50}}},
      {"000p", 2, {{"saturation", -50}, {"hue", -50}, {"brightness", -49}}},
  };
  for (const auto& start : kStarts) {
    SCOPED_TRACE(start.keys);
    const auto run = PlayTest(test, std::string(start.keys) + 'q');
    const std::string sent = simhal::Calls().back();
    const auto offsets = SentOffsets(sent, start.region);
    EXPECT_EQ(PrintedOffsets(run.output), offsets) << run.output << sent;
    EXPECT_TRUE(start.offsets.empty() || start.offsets == offsets) << sent;
    EXPECT_EQ(SentOffsets(sent, 0), kept) << "a different region was selected";
  }
}

TEST(ColorManagement, AdvancedOffsetsAreKeptBetweenRuns) {
  PlayTest(VpqTestCase::VPQ_FunctionTest_HAL_VPQ_SetPreferredColor, "02q");
  EXPECT_NE(simhal::Calls()[2].find("nHueGain=[128 134 128 128 128 128 134 128 128]"),
            std::string::npos)
      << simhal::Calls()[2];
  PlayTest(VpqTestCase::VPQ_FunctionTest_HAL_VPQ_SetPreferredColor, "0q");
  EXPECT_NE(simhal::Calls()[1].find("nHueGain=[128 134 128 128 128 128 140 128 128]"),
            std::string::npos)
      << simhal::Calls()[1];
}

}  // namespace
