// Timings, injected failures and scheduled events, as set by commands.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <optional>
#include <regex>
#include <string>
#include <thread>

#include "HalSteps.h"
#include "SimHal.h"
#include "k2v/thermal.h"

namespace {

TEST(Timings, HaveThePublishedValues) {
  // 1920x1200p60 is computed, and equals VESA's published reduced-blanking timing (154.00 MHz).
  const struct {
    const char* name;
    uint32_t format;
    int hTotal, vTotal, hPorch, vPorch, hFreq, vFreq, scan;
  } kCases[] = {
      {"3840x2160p60", 97, 4400, 2250, 384, 82, 13500, 6000, K2V_HDMI_SCAN_PROGRESSIVE},
      {"3840x2160p59.94", 97, 4400, 2250, 384, 82, 13487, 5994, K2V_HDMI_SCAN_PROGRESSIVE},
      {"3840x2160p23.976", 93, 5500, 2250, 384, 82, 5395, 2398, K2V_HDMI_SCAN_PROGRESSIVE},
      {"1920x1080i50", 20, 2640, 1125, 192, 20, 2813, 5000, K2V_HDMI_SCAN_INTERLACED},
      {"720x480p59.94", 3, 858, 525, 122, 36, 3147, 5994, K2V_HDMI_SCAN_PROGRESSIVE},
      {"1920x1200p60", 0, 2080, 1235, 112, 32, 7410, 6000, K2V_HDMI_SCAN_PROGRESSIVE},
      {"3831x2160p60", 0, 3991, 2222, 112, 59, 13332, 6000, K2V_HDMI_SCAN_PROGRESSIVE},
  };
  simhal::Apply("lock 0 0");
  DoSteps(kHdmiOn);
  for (const auto& expected : kCases) {
    simhal::PlugHdmi(0, expected.name);
    const K2V_HDMI_TIMING_T timing = TimingOf(0);
    EXPECT_EQ(timing.format, expected.format) << expected.name;
    EXPECT_EQ(timing.hTotal, expected.hTotal) << expected.name;
    EXPECT_EQ(timing.vTotal, expected.vTotal) << expected.name;
    EXPECT_EQ(timing.hPorch, expected.hPorch) << expected.name;
    EXPECT_EQ(timing.vPorch, expected.vPorch) << expected.name;
    EXPECT_EQ(timing.hFreq, expected.hFreq) << expected.name;
    EXPECT_EQ(timing.vFreq, expected.vFreq) << expected.name;
    EXPECT_EQ(timing.scanType, expected.scan) << expected.name;
  }
}

std::string OutputOf(const std::string& command) {
  std::string output;
  std::FILE* const pipe = popen((command + " 2>/dev/null").c_str(), "r");
  for (int c = 0; (c = std::fgetc(pipe)) != EOF;) output.push_back(static_cast<char>(c));
  pclose(pipe);
  return output;
}

/// What an independent program knows of a timing of CEA-861. Pixels that are sent twice count once.
struct StandardTiming {
  std::string name;
  int hTotal, vTotal, hPorch, vPorch;
};

/// The timing of a code; nothing if there is none.
std::optional<StandardTiming> StandardTimingOf(int code) {
  static const std::regex kPattern(
      R"(VIC +\d+: +(\d+)x(\d+)(i?) +([\d.]+) Hz[^]*Hfront +(\d+) Hsync +(\d+) Hback +(\d+)[^]*)"
      R"(Vfront +(\d+) Vsync +(\d+) Vback +(\d+))");
  const std::string printed = OutputOf("edid-decode --vic " + std::to_string(code));
  std::smatch match;
  // Of an interlaced timing the first field is described first.
  const std::string first = printed.substr(0, printed.find("Odd Field"));
  if (!std::regex_search(first, match, kPattern)) return std::nullopt;
  const auto number = [&](std::size_t group) { return std::stoi(match[group]); };
  const bool isInterlaced = match[3].length() > 0;
  const int repeats = isInterlaced && number(1) == 1440 ? 2 : 1;
  const int width = number(1) / repeats, vBlank = number(8) + number(9) + number(10);
  return StandardTiming{std::to_string(width) + "x" + match[2].str() + (isInterlaced ? "i" : "p") +
                            std::to_string(std::lround(std::stod(match[4]))),
                        width + (number(5) + number(6) + number(7)) / repeats,
                        number(2) + (isInterlaced ? 2 * vBlank + 1 : vBlank),
                        (number(6) + number(7)) / repeats, number(9) + number(10)};
}

TEST(Timings, AgreeWithAnIndependentTableOfTheStandard) {
  if (!StandardTimingOf(16)) GTEST_SKIP() << "edid-decode is not installed";
  simhal::Apply("lock 0 0");
  DoSteps(kHdmiOn);
  int compared = 0;
  for (int code = 1; code <= 127; ++code) {
    const auto standard = StandardTimingOf(code);
    if (!standard || !simhal::Apply("plug 0 " + standard->name).empty()) continue;
    const K2V_HDMI_TIMING_T timing = TimingOf(0);
    if (timing.format != static_cast<uint32_t>(code)) continue;  // of another aspect ratio
    ++compared;
    EXPECT_EQ(timing.hTotal, standard->hTotal) << standard->name;
    EXPECT_EQ(timing.vTotal, standard->vTotal) << standard->name;
    EXPECT_EQ(timing.hPorch, standard->hPorch) << standard->name;
    EXPECT_EQ(timing.vPorch, standard->vPorch) << standard->name;
  }
  EXPECT_EQ(compared, 38) << "all but 2160p100 and 2160p120, which exceed the link's capacity";
}

TEST(State, ShowsThePreviewOfAWindow) {
  DoSteps("s-init s-open");
  EXPECT_EQ(simhal::State().find(", hdmi preview"), std::string::npos);
  EXPECT_EQ(K2V_RHAL_VSC_SetHDMI_Preview(0, 1), K2V_RHAL_OK);
  EXPECT_NE(simhal::State().find(", hdmi preview"), std::string::npos) << simhal::State();
}

TEST(State, ShowsProgrammedFailuresAndMisbehaviours) {
  EXPECT_NE(simhal::State().find("programmed failures:\n  none\n"), std::string::npos);
  simhal::Apply("fail K2V_RHAL_VPQ_SetNR -7 --at 3 --times 2");
  EXPECT_NE(simhal::State().find("programmed failures:\n  K2V_RHAL_VPQ_SetNR returns -7, after 2 "
                                 "calls, for 2 calls\n"),
            std::string::npos)
      << simhal::State();
  EXPECT_EQ(simhal::State().find("2 calls\n  none"), std::string::npos);
  EXPECT_EQ(simhal::Apply("misbehave K2V_RHAL_VSC_Open hang --at 2"), "");
  EXPECT_NE(simhal::State().find("programmed misbehaviour: K2V_RHAL_VSC_Open hang, after 1 call\n"),
            std::string::npos)
      << simhal::State();
  EXPECT_NE(simhal::Apply("misbehave K2V_RHAL_VSC_Open hang --in 2").find("invalid option '--in'"),
            std::string::npos);
}

TEST(Signal, NeedsCableSourceAndHotPlug) {
  const auto width = [] { return TimingOf(0).active.w; };
  simhal::Apply("lock 0 0");
  DoSteps("h-init h-open");
  K2V_RHAL_VFE_HDMI_Set_HotPlug(0, 0);
  DoSteps("h-conn0");
  EXPECT_EQ(width(), 0) << "hot-plug held low";
  DoSteps("h-hpd");
  EXPECT_EQ(width(), 3840);
  EXPECT_EQ(simhal::Apply("signal 0 off"), "");
  EXPECT_EQ(width(), 0);
  EXPECT_EQ(simhal::Apply("signal 0 on"), "");
  EXPECT_EQ(simhal::Apply("timing 0 720x576p50"), "");
  EXPECT_EQ(width(), 720);
  simhal::Unplug(0);
  EXPECT_EQ(width(), 0);
  EXPECT_NE(simhal::Apply("signal 0 on").find("no source at port '0'"), std::string::npos);
}

TEST(Failures, OccurAtTheirCallWithoutSideEffects) {
  simhal::Fail("K2V_RHAL_VFE_HDMI_Initialize", 77, 2, 2);
  EXPECT_EQ(DoSteps("h-init"), 0);
  EXPECT_EQ(DoSteps("h-init"), 77);
  EXPECT_EQ(DoSteps("h-init"), 77);
  EXPECT_EQ(DoSteps("h-init"), K2V_RHAL_ERR_ALREADY);
  DoSteps("h-hpd h-open h-conn0");
  simhal::Fail("K2V_RHAL_VFE_HDMI_GetPortTimingInfo", -1);
  K2V_HDMI_TIMING_T timing = {};
  timing.format = 1234;
  simhal::ClearCalls();
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetPortTimingInfo(0, &timing), -1);
  EXPECT_EQ(timing.format, 1234U);
  EXPECT_EQ(simhal::Calls().front(), "K2V_RHAL_VFE_HDMI_GetPortTimingInfo(0, {}) = -1");
  EXPECT_EQ(simhal::Apply("clear K2V_RHAL_VFE_HDMI_GetPortTimingInfo"), "");
  EXPECT_EQ(DoSteps("h-time0"), 0);
  simhal::Fail("K2V_RHAL_VFE_HDMI_Close", -9);
  EXPECT_EQ(DoSteps("h-close"), -9);
  EXPECT_EQ(DoSteps("h-open"), K2V_RHAL_ERR_ALREADY) << "a failed close closes nothing";
  EXPECT_THROW(simhal::Fail("K2V_RHAL_VFE_HDMI_Klose", 1), std::invalid_argument);
}

std::atomic<int> notifications{0};

TEST(Thermometer, CallsItsNotifierOncePerChange) {
  simhal::Apply("thermal off");
  ASSERT_EQ(K2V_RHAL_register_thermal_notifier([](int) { ++notifications; }), 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(80));  // time to call it wrongly
  EXPECT_EQ(notifications, 0);
  simhal::Apply("temperature 70");
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (notifications == 0 && std::chrono::steady_clock::now() < limit) std::this_thread::yield();
  std::this_thread::sleep_for(std::chrono::milliseconds(80));
  EXPECT_EQ(notifications, 1);
}

TEST(Events, HappenAtTheGivenPollOfTheirPort) {
  simhal::Apply("lock 0 0");
  DoSteps("h-init h-hpd h-open h-conn0 h-conn1");
  ASSERT_EQ(simhal::Apply("after 3 polls 0 timing 0 1280x720p50"), "");
  ASSERT_EQ(simhal::Apply("after 1 polls 1 unplug 1"), "");
  simhal::Fail("K2V_RHAL_VFE_HDMI_GetPortTimingInfo", -1, 2, 1);  // a failed poll counts
  EXPECT_EQ(TimingOf(0).active.w, 3840);
  EXPECT_EQ(TimingOf(0).active.w, 0);
  EXPECT_EQ(TimingOf(1).active.w, 0);
  EXPECT_EQ(TimingOf(0).active.w, 1280);
}

TEST(Events, HappenAtTheirTimesInOrder) {
  simhal::Apply("lock 0 0");
  DoSteps(kHdmiOn);
  ASSERT_EQ(simhal::Apply("after 3600 s unplug 0"), "");
  ASSERT_EQ(simhal::Apply("after 0.02 s timing 0 1280x720p50"), "");
  ASSERT_EQ(simhal::Apply("after 0.01 s timing 0 720x480p60"), "");
  EXPECT_NE(simhal::State().find("s: unplug 0\n"), std::string::npos);
  TimingOf(0);                                                 // polls do not count for them
  std::this_thread::sleep_for(std::chrono::milliseconds(30));  // both are due at the next query
  EXPECT_EQ(TimingOf(0).active.w, 1280) << simhal::State();
}

TEST(Events, TimesInTheStateAlwaysHaveThreeDecimals) {
  for (int i = 100; i < 120; ++i)  // whatever the time of the state, two are at full 10 ms
    ASSERT_EQ(simhal::Apply("after 3000." + std::to_string(i) + " s unplug 0"), "");
  const std::string state = simhal::State();
  const std::regex line("  in \\d+\\.\\d{3} s: unplug 0\n");
  EXPECT_EQ(std::distance(std::sregex_iterator(state.begin(), state.end(), line), {}), 20) << state;
}

TEST(Commands, SmallestAndLargestTimingsAreAccepted) {
  EXPECT_EQ(simhal::Apply("plug 0 64x64p60"), "");
  EXPECT_EQ(simhal::Apply("plug 0 8192x4320p10"), "");
}

TEST(Commands, InvalidOnesAreRejectedImmediately) {
  EXPECT_NE(simhal::Apply("after 1 s signal 7 on").find("invalid port '7': expected 0 to 3"),
            std::string::npos);
  EXPECT_EQ(simhal::Apply("after 0 s signal 3 on"), "");  // fails only when due
  simhal::State();
  EXPECT_EQ(simhal::Calls().back().rfind("# signal 3 on: ", 0), 0U);
  for (int i = 0; i < 64; ++i) ASSERT_EQ(simhal::Apply("fail K2V_RHAL_VSC_Open 1 --at 9"), "");
  EXPECT_NE(simhal::Apply("fail K2V_RHAL_VSC_Open 1").find("expected at most 64"),
            std::string::npos);
}

TEST(Media, CommandsAreStoredAndInvalidOnesRejected) {
  EXPECT_EQ(simhal::Apply("defect vdec corrupt 300"), "");
  EXPECT_EQ(simhal::Apply("defect audio late 0 21"), "");
  EXPECT_EQ(simhal::Apply("stick out"), "");
  EXPECT_NE(simhal::State().find("stick out, network up, tftp up, disk free\n"
                                 "defects of dumps:\n  vdec corrupt 300\n  audio late 0 21\n"),
            std::string::npos)
      << simhal::State();
  EXPECT_EQ(simhal::Apply("counter 900000 -20.5"), "");
  EXPECT_NE(simhal::State().find("counter of dumps: from 900000 on, drift -20.5 ppm\n"),
            std::string::npos);
  EXPECT_EQ(simhal::Apply("counter free"), "");
  EXPECT_EQ(simhal::State().find("counter of dumps"), std::string::npos);
  EXPECT_EQ(simhal::Apply("defect none"), "");
  EXPECT_NE(simhal::State().find("defects of dumps:\n  none\n"), std::string::npos);
  const struct {
    const char* command;
    const char* refusal;
  } kWrong[] = {
      {"defect", "wrong number of arguments in 'defect': expected defect STAGE KIND"},
      {"defect all", "incomplete defect 'all': expected STAGE change FRAME"},
      {"defect vdecc drop 1", "invalid stage 'vdecc': expected OMXIN"},
      {"defect vdec drop", "incomplete defect 'vdec'"},
      {"defect dvo late 3", "invalid defect 'late' for DVO, whose dump has no clock"},
      {"counter 900000", "missing drift after '900000': expected START PPM or free"},
      {"counter -1 0", "invalid number of ticks '-1': expected 0 to 2147483647"},
      {"counter 0 2000", "invalid drift in ppm '2000': expected -1000 to 1000"},
      {"stick gone", "invalid state of the stick 'gone': expected in or out"},
      {"disk", "wrong number of arguments in 'disk': expected disk free|full"},
  };
  for (const auto& wrong : kWrong)
    EXPECT_NE(simhal::Apply(wrong.command).find(wrong.refusal), std::string::npos)
        << simhal::Apply(wrong.command);
  for (int i = 0; i < 32; ++i) ASSERT_EQ(simhal::Apply("defect vo nothing"), "");
  EXPECT_NE(simhal::Apply("defect vo nothing").find("expected at most 32"), std::string::npos);
}

TEST(Trace, KeepsOnlyTheNewestLines) {
  for (int i = 0; i < 9000; ++i) DoSteps("h-init");
  EXPECT_EQ(simhal::Calls().size(), 8192U);
  EXPECT_EQ(simhal::Calls().front(), "K2V_RHAL_VFE_HDMI_Initialize() = -4");
  simhal::Reset();
  EXPECT_TRUE(simhal::Calls().empty());
  EXPECT_EQ(DoSteps("h-init"), 0);
}

}  // namespace
