// Which cross-module tests prompt depends on the board's settings: the tests run on boards with
// different settings, and the prompts are compared with the module's rows.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "BoardFixture.h"

namespace {

namespace fs = std::filesystem;
using test::Quoted;

constexpr int kRunLimitMs = 60000;

using Ids = std::set<std::string>;

class PromptingTest : public test::BoardFixture {
 protected:
  /// Output lines of a jq expression for a file.
  static Ids Query(const std::string& expression, const fs::path& file) {
    const auto said = test::RunShell("jq -r " + Quoted(expression) + " " + Quoted(file));
    EXPECT_EQ(said.status, 0) << said.output;
    std::istringstream lines(said.output);
    Ids ids;
    for (std::string line; std::getline(lines, line);) ids.insert(line);
    return ids;
  }

  void Put(const std::string& file, const std::string& text) const {
    fs::create_directories(OnBoard(file).parent_path());
    std::ofstream(OnBoard(file)) << text;
  }

  /// Runs the patterns with `answer` to every prompt and records which tests prompted.
  void Drive(const std::vector<std::string>& patterns, const std::string& answer = "0") {
    Put("/tmp/answers", "*\t*\t" + answer + "\n");
    std::vector<std::string> arguments = {"--run"};
    arguments.insert(arguments.end(), patterns.begin(), patterns.end());
    arguments.insert(arguments.end(), {"--disruptive", "--answers", "/tmp/answers", "--timeout",
                                       "20", "--json", "/tmp/o.json"});
    test::Pty& pty = Start({.arguments = arguments, .timeScale = 50});
    ASSERT_TRUE(pty.ExpectEnd(kRunLimitMs));
    const auto ran = Query("select(.event == \"test-end\" and .verdict != \"SKIPPED\") | .test",
                           OnBoard("/tmp/o.json"));
    ASSERT_FALSE(ran.empty()) << pty.Transcript();
    driven_.insert(ran.begin(), ran.end());
    asked_.merge(
        Query("select(.event == \"test-end\" and .prompts > 0) | .test", OnBoard("/tmp/o.json")));
  }

  Ids asked_;
  Ids driven_;
};

TEST_F(PromptingTest, CrossModuleRowsMarkThePromptingTests) {
  // A new board: nothing is configured or installed. Setting it up would end with a reboot.
  Drive({"CM*", "--exclude", "CM*/0"});
  // A board with dumps whose report server has not been configured.
  const fs::path home = OnBoard("/data/cross_module");
  ASSERT_EQ(
      test::RunShell(CVN_DUMP_GENERATOR " --case 101 --home " + Quoted(home) + " --dump-dir " +
                     Quoted(OnBoard("/tmp/cross_module")) + " --defect VDEC:change:300:crc")
          .status,
      0);
  for (const char* test : {"CMplaybackModule/15", "CMplaybackModule/22"}) {
    fs::remove(home / "config/tftp_ip.cfg");
    Put("/data/cross_module/config/report_send_to_USB_TFTP.config", "2\n");
    Put("/tmp/cross_module/file_format.cfg", "101\n");
    Drive({test});
  }
  // A board that was set up already; 2 leaves it unchanged.
  fs::create_directories(home / "gst_root/usr");
  Drive({"CM*/0"}, "2");

  ASSERT_EQ(test::RunShell(CVN_HARNESS " --list --format json >" + Quoted(Board() / "list")).status,
            0);
  const auto rows = [&](const std::string& condition) {
    return Query(".[] | select((.test | startswith(\"CM\")) and " + condition + ") | .test",
                 Board() / "list");
  };
  EXPECT_EQ(asked_, rows(".prompts"));
  // All items but the separators of the menu were run.
  EXPECT_EQ(driven_.size() + 2, rows("true").size());
}

}  // namespace
