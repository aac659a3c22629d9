// Verification of dumps without a board, with all results as whole texts.
#include "runner/DumpVerification.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "BoardFiles.h"
#include "Expected.h"
#include "Scripted.h"
#include "TestCase/CrossModule/stages/src/TestCaseCatalogue.h"
#include "runner/ExitStatus.h"

namespace {

std::string Text(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

/// Everything that a verification writes.
struct Verified {
  int status;
  std::string text;
};

Verified Verify(const crossmodule::Home& home, const std::string& testCase) {
  runner::Options options;
  options.mode = runner::Mode::kVerify;
  options.verifyCase = testCase;
  options.dump = home.Path() + "dump_tmp";
  options.golden = home.Path() + "golden_data/playback";
  options.color = "never";
  const std::string files = testing::TempDir() + "/out.";
  for (std::size_t i = 0; i < options.outputs.size(); ++i)
    options.outputs[i] = files + std::to_string(i);
  options.events = files + "events";
  options.strip = files + "strip";
  ModuleTypeList().clear();  // as in a new process
  Verified verified;
  const auto run = scripted::Play(
      "", [&] { return verified.status = runner::VerifyDumps(options, STDOUT_FILENO), 0; });
  verified.text = run.output;
  for (const std::string& path : options.outputs) verified.text += "==== \n" + Text(path);
  verified.text += "==== events\n" + Text(options.events) + "==== strip\n" + Text(options.strip);
  for (auto at = verified.text.find(home.Path()); at != verified.text.npos;
       at = verified.text.find(home.Path()))
    verified.text.replace(at, home.Path().size(), "HOME/");
  return verified;
}

TEST(DumpVerification, WritesEveryResultOfAFailingCase) {
  crossmodule::Home home;
  home.Play(501, {player::ParseDefect("VDEC:corrupt:100"), player::ParseDefect("audio:late:0:21")});
  const Verified verified = Verify(home, "501");
  EXPECT_EQ(verified.status, runner::kSomeFailed);
  EXPECT_TRUE(test::IsAsExpected("verify.txt", verified.text));
}

TEST(DumpVerification, PassesOnlyWithAllDumps) {
  crossmodule::Home home;
  home.Play(101, {});
  const Verified whole = Verify(home, "101");
  EXPECT_EQ(whole.status, runner::kAllPassed) << whole.text;
  std::filesystem::remove(*std::filesystem::directory_iterator(home.Path() + "dump_tmp"));
  EXPECT_EQ(Verify(home, "101").status, runner::kSomeFailed);
}

}  // namespace
