// A test of unattended runs on the simulated board.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "BoardFixture.h"

namespace test {

inline constexpr int kRunLimitMs = 60000;

inline bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

class UnattendedTest : public BoardFixture {
 protected:
  /// Runs cvntester with the arguments until it ends and returns its exit status.
  int Run(std::vector<std::string> arguments, const std::string& scenario = "") {
    if (arguments[0] == "--run" || arguments[0] == "--resume")
      arguments.insert(arguments.end(), {"--color", "never"});
    // At exit the leak check looks for /proc entries that the board does not have.
    Pty& pty = Start({.launcher = {"--setenv", "ASAN_OPTIONS=detect_leaks=0"},
                      .arguments = arguments,
                      .scenario = scenario});
    EXPECT_TRUE(pty.ExpectEnd(kRunLimitMs));
    screen_ = pty.Transcript();
    return pty.Wait();
  }
  const std::string& Screen() const { return screen_; }

  /// Output of an external program for a file of the board.
  std::string Judge(const std::string& command, const std::string& file) const {
    const auto judged = RunShell(command + " " + Quoted(OnBoard(file)));
    EXPECT_EQ(judged.status, 0) << command << " " << file << ": " << judged.output;
    return judged.output;
  }
  /// Output of a jq expression for a file of JSON lines, read as one array.
  std::string Query(const std::string& expression, const std::string& file) const {
    std::string said = Judge("jq -rs " + Quoted(expression), file);
    while (said.ends_with('\n')) said.pop_back();
    return said;
  }
  void Put(const std::string& file, const std::string& text) const {
    std::filesystem::create_directories(OnBoard(file).parent_path());
    std::ofstream(OnBoard(file)) << text;
  }

 private:
  std::string screen_;
};

}  // namespace test
