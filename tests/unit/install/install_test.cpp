// Files installed for a board, and the program's dependencies there.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>

#include "BoardFixture.h"

namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

/// The values of one kind of entry, such as NEEDED, in the dynamic section of a program.
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

/// The libraries that a program needs and that a board may not have.
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

  /// Starts the program with `environment` set.
  test::ShellResult Start(const std::string& environment = "",
                          const std::string& arguments = "--version") const {
    return test::RunShell("env -u LD_LIBRARY_PATH " + environment + " " EMULATOR " " +
                          test::Quoted(Program()) + " " + arguments + " 2>&1");
  }

  /// Creates a HAL library next to the program, with all functions except those in `lacking`.
  void MakeHalWithout(const Names& lacking) const {
    std::ifstream functions(HAL_FUNCTIONS);
    const fs::path source = directory_ / "hal.c";
    std::ofstream text(source);
    for (std::string name; std::getline(functions, name);) {
      if (!lacking.contains(name)) text << "void " << name << "(void) {}\n";
    }
    text.close();
    fs::create_directory(directory_ / "lib");
    const test::ShellResult built =
        test::RunShell(CXX " -x c -shared -fPIC -nostdlib -Wl,-soname,libcvn_k2vhal.so " +
                       test::Quoted(source) + " -o " + test::Quoted(Hal()) + " 2>&1");
    ASSERT_EQ(built.status, 0) << built.output;
  }

  fs::path Hal() const { return directory_ / "lib/libcvn_k2vhal.so"; }

  fs::path Program() const { return directory_ / "bin/cvntester"; }

  const fs::path directory_ = testing::TempDir() + "cvn-install-";
};

TEST(Built, NeedsOnlyTheHalAndTheLanguageRuntimes) {
  EXPECT_EQ(Foreign(HARNESS), Names());
}

TEST_F(Installed, HasProgramManPageAndCompletion) {
  Names expected{"bin/cvntester", "share/man/man1/cvntester.1",
                 "share/bash-completion/completions/cvntester"};
  // Installed only if help2man and lowdown are available.
  constexpr char kFormat[] = "share/man/man5/cvntester-answers.5";
  if (Files().contains(kFormat)) expected.insert(kFormat);
  EXPECT_EQ(Files(), expected);
  EXPECT_EQ(Foreign(Program()), Names());
  EXPECT_EQ(Dynamic("RUNPATH", Program()), Names{"$ORIGIN/../lib"});
  EXPECT_EQ(Dynamic("RPATH", Program()), Names());
}

TEST_F(Installed, UsesTheHalOfTheBoard) {
  const test::ShellResult without = Start();
  EXPECT_EQ(without.status, 127);
  EXPECT_NE(without.output.find("libcvn_k2vhal.so"), std::string::npos) << without.output;
  const test::ShellResult elsewhere = Start("LD_LIBRARY_PATH=" HAL_DIRECTORY);
  EXPECT_EQ(elsewhere.status, 0) << elsewhere.output;
}

TEST_F(Installed, UsesTheHalNextToIt) {
  Install("simulation");
  EXPECT_TRUE(Files().contains("lib/libcvn_k2vhal.so"));
  const test::ShellResult beside = Start();
  EXPECT_EQ(beside.status, 0) << beside.output;
}

TEST_F(Installed, PrintsItsBuildInformation) {
  const test::ShellResult version = Start("LD_LIBRARY_PATH=" HAL_DIRECTORY);
  EXPECT_TRUE(
      std::regex_match(version.output, std::regex("cvntester [0-9]+\\.[0-9]+\\.[0-9]+\n"
                                                  "commit ([0-9a-f]{12}(-dirty)?|unknown)\n"
                                                  "build .* for .*\nHAL interface [0-9a-f]{12}\n")))
      << version.output;
}

TEST_F(Installed, ReportsAllFunctionsMissingInTheHal) {
  MakeHalWithout({"K2V_RHAL_GAL_Init", "K2V_RHAL_VSC_Open", "_ZN5RLink6CreateEv"});
  const std::regex lacking(
      ".*/libcvn_k2vhal\\.so: [0-9]+ of [0-9]+ functions found\nmissing: K2V_RHAL_GAL_Init\n"
      "missing: K2V_RHAL_VSC_Open\nmissing: RLink::Create\\(\\)\n[^\n]*\n");
  for (const std::string& library : {std::string(), Hal().string()}) {
    const test::ShellResult check = Start("", "--check-hal " + library);
    EXPECT_EQ(check.status, 1);
    EXPECT_TRUE(std::regex_match(check.output, lacking)) << check.output;
  }
  EXPECT_EQ(Start("", "--check-hal " HAL_DIRECTORY "/libcvn_k2vhal.so").status, 0);
  EXPECT_EQ(Start("", "--help").status, 0);
  for (const char* const calling : {"", "--run UTGalModule", "--record session"}) {
    const test::ShellResult started = Start("", calling);
    EXPECT_EQ(started.status, 99);
    EXPECT_TRUE(std::regex_match(
        started.output,
        std::regex("cvntester: the board's HAL library lacks 3 of [0-9]+ functions: "
                   "K2V_RHAL_GAL_Init, K2V_RHAL_VSC_Open, RLink::Create\\(\\)\n")))
        << started.output;
  }
}

TEST_F(Installed, ReportsWhyALibraryCannotBeChecked) {
  MakeHalWithout({});
  EXPECT_EQ(Start("", "--check-hal").status, 0);
  const test::ShellResult absent = Start("", "--check-hal /absent/hal.so");
  EXPECT_EQ(absent.status, 2);
  EXPECT_NE(absent.output.find("cvntester: /absent/hal.so"), std::string::npos) << absent.output;
  const test::ShellResult text = Start("", "--check-hal " + test::Quoted(directory_ / "hal.c"));
  EXPECT_EQ(text.status, 1);
  EXPECT_NE(text.output.find("invalid ELF header"), std::string::npos) << text.output;
}

TEST_F(Installed, ChecksAllFunctionsUsedByTheProgram) {
  const test::ShellResult symbols = test::RunShell(
      READELF " --dyn-syms -W " + test::Quoted(Program()) +
      " | awk '$7 == \"UND\" && $8 ~ /^(K2V_|_ZN5RLink)/ { print $8 }' | LC_ALL=C sort | "
      "diff - " HAL_FUNCTIONS);
  EXPECT_EQ(symbols.status, 0) << symbols.output;
}

}  // namespace
