// ./run.sh as a user calls it. It uses build/release, so these tests run only from that build.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "BoardFixture.h"
#include "Pty.h"

namespace {

namespace fs = std::filesystem;

class RunScript : public test::BoardFixture {
 protected:
  void SetUp() override {
    if (fs::path(CVN_BUILD_DIRECTORY) != fs::path(CVN_SOURCE_DIRECTORY) / "build/release")
      GTEST_SKIP() << "this is not the build that run.sh starts";
    BoardFixture::SetUp();
  }

  /// Standard output of run.sh with these arguments for the harness; its standard error goes to
  /// `Errors`.
  std::string Output(const std::string& arguments) const {
    const auto run =
        test::RunShell(CVN_SOURCE_DIRECTORY "/run.sh --board " + test::Quoted(BoardDirectory()) +
                       " -- " + arguments + " 2>" + test::Quoted(ErrorFile()) + " </dev/null");
    EXPECT_EQ(run.status, 0) << run.output << Errors();
    return run.output;
  }
  std::string Errors() const { return test::FileText(ErrorFile()); }
  fs::path BoardDirectory() const { return Board().parent_path() / "own"; }

 private:
  fs::path ErrorFile() const { return Board().parent_path() / "errors"; }
};

TEST_F(RunScript, PrintsOnlyTheRequestedOutputToStandardOutput) {
  const std::string list = Output("--list UTSvpModule --format json");
  EXPECT_TRUE(list.starts_with("[")) << list;
  EXPECT_NE(Errors().find("Board files: "), std::string::npos) << "the banner";
  const std::string junit = Output("--run UTVpqModule/204 --junit -");
  EXPECT_TRUE(junit.starts_with("<?xml ")) << junit;
  EXPECT_TRUE(junit.ends_with("</testsuites>\n")) << junit;
}

TEST_F(RunScript, HelpOfTheProgramStartsNoBoard) {
  for (const char* argument : {"--version", "--help"}) {
    EXPECT_TRUE(Output(argument).starts_with(argument == std::string("--version") ? "cvntester "
                                                                                  : "usage: "));
    EXPECT_EQ(Errors(), "");
  }
  EXPECT_FALSE(fs::exists(BoardDirectory()));
}

// The page's address as the console shows it, and its status during and after the session.
constexpr char kPanelSession[] = R"(
  mkfifo in
  "$run" --board own --panel <in >out 2>&1 & session=$!
  exec 3>in
  trap '' PIPE  # the server may go between two of our lines
  until address=$(grep -o 'http://127[^ ]*' out); do sleep 0.02; done
  host=${address#http://} path=/${host#*/} host=${host%%/*}
  answers() {
    exec 4<>"/dev/tcp/127.0.0.1/${host#*:}" || return
    printf 'GET %s HTTP/1.0\r\nHost: %s\r\n\r\n' "$path" "$host" >&4
    head -1 <&4
  }
  answers
  exec 3>&-
  wait "$session" || true
  until ! answers >/dev/null 2>&1; do sleep 0.02; done
)";

TEST_F(RunScript, PanelRunsDuringTheSession) {
  if (!fs::exists(CVN_BUILD_DIRECTORY "/bin/cvnpanel")) GTEST_SKIP() << "this build has no panel";
  const auto run = test::RunShell("cd " + test::Quoted(Board().parent_path()) +
                                  " && run=" CVN_SOURCE_DIRECTORY "/run.sh bash -c " +
                                  test::Quoted(kPanelSession));
  EXPECT_EQ(run.status, 0) << run.output;
  EXPECT_TRUE(run.output.find(" 200 OK") != std::string::npos) << run.output;
}

// The steps of a build, on a terminal and otherwise.
TEST(SetUp, ShowsItsStepsOnlyOnATerminal) {
  const std::string command =
      "set -euo pipefail; . " CVN_SOURCE_DIRECTORY
      "/scripts/common.sh; "
      "ninja() { echo '[0/7] x'; until [[ -e first ]]; do sleep 0.02; done; "
      "echo '[1/7] Building x'; until [[ -e second ]]; do sleep 0.02; done; }; "
      "Build none; echo done";
  test::Pty pty({"bash", "-c", command});
  EXPECT_TRUE(pty.Expect("building build/none: step 0 of 7"));
  std::ofstream("first").flush();
  EXPECT_TRUE(pty.Expect("\r\x1b[KBuilding …\n")) << "not on a line of its own";
  EXPECT_TRUE(pty.Expect("building build/none: step 1 of 7"));
  std::ofstream("second").flush();
  EXPECT_TRUE(pty.Expect("done"));
  EXPECT_EQ(pty.Wait(), 0);
  EXPECT_EQ(test::RunShell("bash -c " + test::Quoted(command)).output, "Building …\ndone\n");
}

}  // namespace
