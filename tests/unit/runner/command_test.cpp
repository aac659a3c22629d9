// What the program prints for the command lines of the files in commands/, and their exit statuses.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>

#include "BoardFixture.h"
#include "Expected.h"
#include "TestDirectory.h"

namespace {

// Reports are at a fixed place.
[[maybe_unused]] const bool kAlone = test::HaveAlone("/tmp/var/log");

/// Without what differs from run to run or with the sources: times, dates, places and builds.
std::string Steady(std::string text) {
  constexpr std::pair<const char*, const char*> kMasks[] = {
      {R"(\b\d+\.\d+ s\b)", "… s"},
      {R"re((time="|"seconds": |seconds: )[\d.]+)re", "$1…"},
      {R"((\t\d+\t)\d+\.\d+\t)", "$1…\t"},
      {R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d[Z\d.:+-]*)", "DATE"},
      {R"(\d\d(_\d\d){4}\.txt)", "DATE.txt"},
      {R"(/\S*/cvntest-\w{6})", "HERE"},
      {R"re(("build": |"board": )"[^"]*")re", "$1…"},
      {R"((\.cpp,\w+ ,)\d+)", "$1…"},
  };
  for (const auto& [regex, mask] : kMasks) text = test::Masked(text, regex, mask);
  return text;
}

class Commands : public testing::TestWithParam<const char*> {};

TEST_P(Commands, PrintAsBefore) {
  setenv("TZ", "UTC0", 1);
  const std::string path = "PATH=" CVN_PROGRAMS ":" CVN_COMMANDS ":$PATH; ";
  const std::string name = GetParam();
  std::ifstream commands(CVN_COMMANDS "/" + name + ".txt");
  std::string text;
  for (std::string line; std::getline(commands, line);) {
    const auto done = test::RunShell(path + "{ " + line + "; } </dev/null 2>&1");
    text += "==== " + line + '\n' + done.output + "---- exit status " +
            std::to_string(done.status) + '\n';
  }
  EXPECT_NE(text, "");
  EXPECT_TRUE(test::IsAsExpected("commands/" + name + ".txt", Steady(text)));
}

INSTANTIATE_TEST_SUITE_P(All, Commands,
                         testing::Values("defects", "errors", "lists", "menus", "register", "runs",
                                         "verify"),
                         [](const auto& name) { return std::string(name.param); });

}  // namespace
