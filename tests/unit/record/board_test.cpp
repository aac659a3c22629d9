// Every function of the simulated board, as its own trace has it and as it is recorded. The trace
// knows of directions and sizes from the functions themselves.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "Emulated.h"
#include "Expected.h"
#include "reader/CallList.h"

namespace {

// Only recordings have calls of handlers.
bool IsHandler(const std::string& line) {
  return line.starts_with("# called ");
}

std::vector<std::string> CallsIn(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<std::string> calls;
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with('#') || IsHandler(line)) calls.push_back(line);
  }
  return calls;
}

std::string Name(const std::string& name) {
  return testing::TempDir() + name;
}

/// Makes all calls with such arguments and this library in front of the board's. Returns what they
/// left in memory, a line each.
std::vector<std::string> CallAll(const std::string& arguments, const std::string& variables,
                                 const std::string& library) {
  const std::string output = Name(arguments) + ".memory";
  const std::string preload = test::IsEmulated() ? " QEMU_SET_ENV=LD_PRELOAD=" : " LD_PRELOAD=";
  const std::string command =
      variables + preload + library + " " CVN_EVERY_CALL " " + arguments + " >" + output + " 2>&1";
  EXPECT_EQ(std::system(command.c_str()), 0);
  return CallsIn(output);
}

/// Records all calls with such arguments; the board's trace of them is in `NAME.trace`.
std::vector<std::string> Record(const std::string& arguments) {
  const std::string base = Name(arguments);
  return CallAll(arguments, "CVNSIM_TRACE=" + base + ".trace CVN_RECORD=" + base, CVN_RECORDER);
}

std::vector<std::string> Tool(const std::string& words) {
  const std::string output = Name("output");
  const int status = std::system((CVN_TRACE " " + words + " >" + output).c_str());
  EXPECT_LE(WEXITSTATUS(status), 1);
  return CallsIn(output);
}

/// The bytes of arguments and of answers in a recording. They change when a pointer gets another
/// direction or size, even where the text of its call stays the same.
std::string Sizes(const std::string& directory) {
  std::string error;
  const auto recording = record::Recording::Open(directory, error);
  if (recording == nullptr) return error;
  size_t in = 0, out = 0;
  record::ReadCalls(*recording, {[&](const record::Call& call) {
    in += call.entry.size();
    out += call.back.size();
  }});
  return std::to_string(in) + " bytes in, " + std::to_string(out) + " bytes out";
}

/// What is recorded otherwise than it is in the trace, of calls with such arguments. Numbers that
/// count up are others when there is a new function, so that these lines are names alone.
std::string Differences(const std::string& arguments) {
  Record(arguments);
  const std::vector<std::string> traced = CallsIn(Name(arguments) + ".trace");
  std::vector<std::string> recorded = Tool("print " + Name(arguments));
  // With numbers that count up a call may look at two bytes more or less in another run.
  std::string text = "== " + arguments;
  text += (arguments == "counting" ? "" : ": " + Sizes(Name(arguments))) + '\n';
  for (const std::string& line : recorded) text += IsHandler(line) ? line + '\n' : "";
  std::erase_if(recorded, IsHandler);
  EXPECT_EQ(recorded.size(), traced.size());
  for (size_t i = 0; i < std::min(recorded.size(), traced.size()); ++i) {
    if (recorded[i] == traced[i]) continue;
    const size_t shown = arguments == "counting" ? recorded[i].find('(') : std::string::npos;
    text += recorded[i].substr(0, shown) + '\n';
  }
  return text;
}

// The expected ones: the trace leaves out sizes and keys of HDCP and what a refused call looked at,
// and shows the link's parameters, regions of colour and pixels in its own ways.
TEST(SimulatedBoard, RecordsEveryCallAsItTakesIt) {
  std::string text;
  for (const char* const arguments : {"null", "zero", "one", "counting", "session"}) {
    text += Differences(arguments);
  }
  EXPECT_TRUE(test::IsAsExpected("calls.txt", text));
}

// The hashed memory is the caller's, the HAL's and that of handlers. Secrets are not recorded.
TEST(SimulatedBoard, LeavesTheSameInMemoryWhenItIsReplayed) {
  for (const char* const arguments : {"zero", "one", "counting", "session"}) {
    std::vector<std::string> expected = Record(arguments);
    std::vector<std::string> replayed =
        CallAll(arguments, "CVN_REPLAY=" + Name(arguments), CVN_REPLAY_HAL);
    for (std::vector<std::string>* const lines : {&expected, &replayed}) {
      std::erase_if(*lines, [](const std::string& line) {
        return line.starts_with("K2V_RHAL_HDCP2_") ||
               line.starts_with("K2V_RHAL_VFE_HDMI_ReadHDCP ");
      });
    }
    EXPECT_GT(expected.size(), 5U);
    EXPECT_EQ(replayed, expected) << arguments;
  }
}

// What a call looked at or had room for is there again, or it is answered differently.
TEST(SimulatedBoard, AnswersEveryCallTheSameWhenItIsMadeAgain) {
  const std::vector<std::string> some = {"6 calls not made: secrets, or the HAL lacks them",
                                         "2 differences"};
  const std::pair<std::string, std::vector<std::string>> rows[] = {
      {"one", some}, {"counting", some}, {"session", {"no differences"}}};
  for (const auto& [arguments, expected] : rows) {
    Record(arguments);
    std::vector<std::string> lines =
        Tool("drive --slower 1e9 --library " CVN_SIMULATED_HAL " " + Name(arguments));
    std::erase_if(lines, [](const std::string& line) {  // a clock, and keys of the board's own
      return line.find("K2V_RHAL_DEVICE_Get_Clock_Value(") != line.npos ||
             line.find("K2V_RHAL_HDCP2_GetKeyInfo(") != line.npos;
    });
    EXPECT_EQ(lines, expected);
  }
}

}  // namespace
