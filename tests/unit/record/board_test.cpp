// Every function of the simulated board, compared between the board's trace and a recording. The
// trace takes directions and sizes from the functions themselves.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "Emulated.h"
#include "Expected.h"
#include "reader/CallList.h"

namespace {

// Only recordings contain calls of handlers.
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

/// Makes all calls with these arguments, with the given library loaded before the board's. Returns
/// the resulting contents of memory, one per line.
std::vector<std::string> CallAll(const std::string& arguments, const std::string& variables,
                                 const std::string& library) {
  const std::string output = Name(arguments) + ".memory";
  const std::string preload = test::IsEmulated() ? " QEMU_SET_ENV=LD_PRELOAD=" : " LD_PRELOAD=";
  const std::string command =
      variables + preload + library + " " CVN_EVERY_CALL " " + arguments + " >" + output + " 2>&1";
  EXPECT_EQ(std::system(command.c_str()), 0);
  return CallsIn(output);
}

/// Records all calls with these arguments; the board's trace of them is in `NAME.trace`.
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

/// The number of bytes of arguments and of results in a recording. They change if a pointer gets
/// another direction or size, even if the text of its call stays the same.
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

/// Calls with these arguments that differ between recording and trace. Counting numbers change
/// whenever a function is added, so only names are printed for them.
std::string Differences(const std::string& arguments) {
  Record(arguments);
  const std::vector<std::string> traced = CallsIn(Name(arguments) + ".trace");
  std::vector<std::string> recorded = Tool("print " + Name(arguments));
  // With counting numbers, a call may read two bytes more or less in another run.
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

// The expected differences: the trace omits HDCP sizes and keys and the memory read by a rejected
// call, and has other formats for link parameters, colour regions and pixels.
TEST(SimulatedBoard, RecordsEveryCallAsInTheTrace) {
  std::string text;
  for (const char* const arguments : {"null", "zero", "one", "counting", "session"}) {
    text += Differences(arguments);
  }
  EXPECT_TRUE(test::IsAsExpected("calls.txt", text));
}

// The hashed memory belongs to the caller, the HAL and handlers. Secrets are not recorded.
TEST(SimulatedBoard, ReplayWritesTheSameMemory) {
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
    const auto [now, then] = std::ranges::mismatch(replayed, expected);
    EXPECT_TRUE(now == replayed.end() && then == expected.end())
        << arguments << ": replayed " << (now == replayed.end() ? "nothing" : *now) << ", recorded "
        << (then == expected.end() ? "nothing" : *then);
  }
}

// All memory that a call read or could write must exist again, or the result differs.
TEST(SimulatedBoard, ReturnsTheSameResultsWhenDrivenByARecording) {
  const std::vector<std::string> some = {"6 calls not made: secrets, or the HAL lacks them",
                                         "2 differences"};
  const std::pair<std::string, std::vector<std::string>> rows[] = {
      {"one", some}, {"counting", some}, {"session", {"no differences"}}};
  for (const auto& [arguments, expected] : rows) {
    Record(arguments);
    std::vector<std::string> lines =
        Tool("drive --slower 1e9 --library " CVN_SIMULATED_HAL " " + Name(arguments));
    std::erase_if(lines, [](const std::string& line) {  // a clock, and the board's keys
      return line.find("K2V_RHAL_DEVICE_Get_Clock_Value(") != line.npos ||
             line.find("K2V_RHAL_HDCP2_GetKeyInfo(") != line.npos;
    });
    EXPECT_EQ(lines, expected);
  }
}

}  // namespace
