// What is installed for a board, and what the program needs there.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>
#include <string>

#include "BoardFixture.h"

namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

/// The values of a kind of entry, such as NEEDED, in a program's dynamic section.
Names Dynamic(const std::string& kind, const fs::path& program) {
  const test::ShellResult section = test::RunShell(READELF " -dW " + test::Quoted(program));
  EXPECT_EQ(section.status, 0) << section.output;
  const std::regex entry("\\(" + kind + "\\)[^\\[\n]*\\[([^\\]]*)\\]");
  Names names;
  for (std::sregex_iterator at(section.output.begin(), section.output.end(), entry), end; at != end;
       ++at)
    names.insert(at->str(1));
  return names;
}

/// The libraries that a program needs and that no board has to have.
Names Foreign(const fs::path& program) {
  static const std::regex kOnEveryBoard(
      "libcvn_k2vhal\\.so|libstdc\\+\\+\\.so\\.6|libgcc_s\\.so\\.1|lib[cm]\\.so\\.6|"
      "ld-linux[a-z0-9-]*\\.so\\.[0-9]");
  Names needed = Dynamic("NEEDED", program);
  EXPECT_TRUE(needed.contains("libcvn_k2vhal.so"));
  std::erase_if(needed, [](const std::string& name) { return regex_match(name, kOnEveryBoard); });
  return needed;
}

class Installed : public testing::Test {
 protected:
  Installed() { Install("cvntester"); }
  ~Installed() override { fs::remove_all(directory_); }

  void Install(const std::string& component) const {
    const test::ShellResult done =
        test::RunShell(CMAKE " --install " BUILD_DIRECTORY " --component " + component +
                       " --prefix " + test::Quoted(directory_));
    ASSERT_EQ(done.status, 0) << done.output;
  }

  Names Files() const {
    Names files;
    for (const auto& entry : fs::recursive_directory_iterator(directory_))
      if (!entry.is_directory()) files.insert(fs::relative(entry.path(), directory_));
    return files;
  }

  /// Starts the program with `environment` before it.
  test::ShellResult Start(const std::string& environment = "") const {
    return test::RunShell("env -u LD_LIBRARY_PATH " + environment + " " EMULATOR " " +
                          test::Quoted(Program()) + " --version");
  }

  fs::path Program() const { return directory_ / "bin/cvntester"; }

  const fs::path directory_ = testing::TempDir() + "cvn-install-";
};

TEST(Built, NeedsNothingButTheHalAndTheLanguagesLibraries) {
  EXPECT_EQ(Foreign(HARNESS), Names());
}

TEST_F(Installed, HasProgramManPageAndCompletion) {
  EXPECT_EQ(Files(), (Names{"bin/cvntester", "share/man/man1/cvntester.1",
                            "share/bash-completion/completions/cvntester"}));
  EXPECT_EQ(Foreign(Program()), Names());
  EXPECT_EQ(Dynamic("RUNPATH", Program()), Names{"$ORIGIN/../lib"});
  EXPECT_EQ(Dynamic("RPATH", Program()), Names());
}

TEST_F(Installed, TakesTheHalOfTheBoard) {
  const test::ShellResult without = Start();
  EXPECT_EQ(without.status, 127);
  EXPECT_NE(without.output.find("libcvn_k2vhal.so"), std::string::npos) << without.output;
  const test::ShellResult elsewhere = Start("LD_LIBRARY_PATH=" HAL_DIRECTORY);
  EXPECT_EQ(elsewhere.status, 0) << elsewhere.output;
}

TEST_F(Installed, TakesTheHalBesideIt) {
  Install("simulation");
  EXPECT_TRUE(Files().contains("lib/libcvn_k2vhal.so"));
  const test::ShellResult beside = Start();
  EXPECT_EQ(beside.status, 0) << beside.output;
}

}  // namespace
