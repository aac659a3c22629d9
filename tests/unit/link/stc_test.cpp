// The clock tool: its registers and its arithmetic.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "LinkFaults.h"
#include "RlinkTestCase.h"
#include "Scripted.h"

namespace {

using Commands = std::vector<std::string>;

std::string Repeated(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

scripted::Run PlayTool(const std::string& choices) {
  return scripted::Play(choices + "5\n", [] { return Wrapper_TestFunc_STC_Tracking(nullptr); });
}

TEST(StcTool, WritesTheSpeedAndLoadsIt) {
  const auto run = PlayTool("2\n7\n");
  EXPECT_EQ(run.result, 0);
  const std::string menu =
      "1 -> speed Up\n2 -> speed Down\n3 -> speed Reset To 90K\n4 -> Show STC diff per second\n"
      "5 -> Exit\ninput:\n";
  EXPECT_EQ(run.output, menu +
                            "0x000107FF\n\033[1;32mSpeed = -1\033[m\n"
                            "-----------Speed Down-----------\n" +
                            menu + menu);
  EXPECT_EQ(scripted::Commands(),
            (Commands{"chmod 777 //sys//crt//register",
                      "echo \"0xB8000474 0x000107FF\" > //sys//crt//register",
                      "echo \"0xB8000480 0x58200016\" > //sys//crt//register",
                      "echo \"0xB8000480 0x58200017\" > //sys//crt//register"}));
}

TEST(StcTool, StepStopsAtBothLimitsOfElevenBits) {
  const struct {
    std::string choices;
    std::string speed;
    std::string value;
  } kCases[] = {
      {Repeated("1\n", 1023), "1023", "0x000103FF"},
      {"1\n", "1023", "0x000103FF"},
      {"3\n" + Repeated("2\n", 1024), "-1024", "0x00010400"},
      {"2\n", "-1024", "0x00010400"},
      {"1\n", "-1023", "0x00010401"},
      {"3\n", "0", "0x00010000"},
  };
  for (const auto& c : kCases) {
    const std::string output = PlayTool(c.choices).output;
    const auto last = output.rfind("Speed = ");
    ASSERT_NE(last, std::string::npos);
    EXPECT_EQ(output.substr(last, output.find('\033', last) - last), "Speed = " + c.speed);
    const Commands commands = scripted::Commands();
    EXPECT_EQ(commands[commands.size() - 3],
              "echo \"0xB8000474 " + c.value + "\" > //sys//crt//register");
  }
}

/// A counter that runs at `ticksPerSecond` from `start`; time passes only in waits.
class FakeClock {
 public:
  FakeClock(int64_t ticksPerSecond, uint32_t start) {
    faults::SetTimeUs(0);
    scripted::OnWait(
        [this](unsigned long us) { faults::SetTimeUs(nowUs_ += static_cast<int64_t>(us)); });
    faults::AnswerShell([=, this] {
      const int64_t ticks = nowUs_ * ticksPerSecond / 1'000'000;
      char reply[80];
      std::snprintf(reply, sizeof reply, "reg addr = 0xb801b6b8 , val = 0x%x\n",
                    start + static_cast<uint32_t>(ticks));
      return std::string(reply);
    });
  }

 private:
  int64_t nowUs_ = 0;
};

TEST(StcTool, ShowsTicksPerSecondForNineSecondsAcrossAWrapAround) {
  const FakeClock clock(91'000, 0xFFFFFF00);
  const std::string output = PlayTool("4\n").output;
  const auto first = output.find("stc_diff=");
  const std::string differences = output.substr(first, output.rfind("stc_diff=") - first);
  EXPECT_EQ(differences, Repeated("stc_diff=91000\n", 899));
  EXPECT_EQ(scripted::WaitedUs(), 9'000'000u);
  const Commands commands = scripted::Commands();
  EXPECT_EQ(commands[1], "echo \"0xb8014f38\" > //sys//crt//register");
  EXPECT_EQ(commands[2], "echo \"0xB801B6B8\" > //sys//crt//register");
}

TEST(StcTool, ReportsAnUnreadableRegisterFile) {
  for (const char* reply : {"", "4\n"}) {
    faults::AnswerShell([=] { return std::string(reply); });
    const std::string output = PlayTool("4\n").output;
    EXPECT_NE(output.find("input:\nopen /sys/crt/register fail\n1 -> "), std::string::npos);
  }
}

}  // namespace
