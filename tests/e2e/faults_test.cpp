// The harness when its environment fails: libraries, memory, terminal, disk.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include "BoardFixture.h"

namespace {

namespace fs = std::filesystem;
using test::Pty;
using test::Quoted;

constexpr char kChoice[] = "Please enter a choice : ";
constexpr char kJudge[] = "Please check the result PASS or FAIL by 'Y' or 'N' ";

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

class Directory {
 public:
  Directory() { fs::create_directories(path_); }
  ~Directory() { fs::remove_all(path_); }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;
  const fs::path& Path() const { return path_; }

 private:
  fs::path path_ = testing::TempDir() + "faults";
};

TEST(Faults, MissingHalFunctionIsReportedAtStartUp) {
  const Directory directory;
  std::string library = test::FileText(CVN_HAL);
  const std::string name("\0K2V_RHAL_GAL_OSDSPLIT\0", 23);
  const std::string other("\0K2V_RHAL_GAL_OSDSPLAT\0", 23);
  std::size_t renamed = 0;
  for (auto at = library.find(name); at != std::string::npos; at = library.find(name), ++renamed)
    library.replace(at, name.size(), other);
  ASSERT_GT(renamed, 0U);
  std::ofstream(directory.Path() / fs::path(CVN_HAL).filename(), std::ios::binary) << library;
  const auto run = test::RunShell("LD_LIBRARY_PATH=" + Quoted(directory.Path()) +
                                  " " CVN_HARNESS " --run UTGalModule </dev/null");
  EXPECT_EQ(run.status, 99);
  EXPECT_TRUE(Contains(run.output, "functions: K2V_RHAL_GAL_OSDSPLIT\n")) << run.output;
  EXPECT_EQ(std::count(run.output.begin(), run.output.end(), '\n'), 1) << run.output;
}

// The sanitizers need more memory than any limit allows.
#if !CVN_SANITIZED
TEST(Faults, OutOfMemoryIsReportedInOneLineWithAStatus) {
  const Directory directory;
  const std::string name = "dump-101-h264-FrtChg-VDEC.txt";
  for (const char* side : {"dump", "golden"}) {
    fs::create_directories(directory.Path() / side);
    std::ofstream file(directory.Path() / side / name);
    file << "frame_no, MaxFALL\n";
    for (int frame = 0; frame < 100'000; ++frame) {
      file << frame << ',';
      for (int column = 1; column < 24; ++column) file << (side[0] == 'd' ? "1," : "2,");
      file.seekp(-1, std::ios::cur);
      file << '\n';
    }
  }
  const auto run = test::RunShell("ulimit -v 100000; cd " + Quoted(directory.Path()) +
                                  "; TMPDIR=. " CVN_HARNESS
                                  " --verify 101 --dump dump --golden golden </dev/null");
  EXPECT_EQ(run.status, 99);
  EXPECT_EQ(run.output, "cvntester: out of memory\n");
}
#endif

class FaultsOnTheBoard : public test::BoardFixture {};

TEST_F(FaultsOnTheBoard, TerminalHangUpEndsTheHarnessAndKeepsTheReport) {
  for (const bool inPrompt : {false, true}) {
    Pty& pty = Start();
    ASSERT_TRUE(Type(pty, {{kChoice, "3"}, {kChoice, "2"}, {kChoice, "15"}, {kJudge, "Y"}}));
    ASSERT_TRUE(pty.Expect(kChoice));
    if (inPrompt) {
      pty.SendLine("37");
      ASSERT_TRUE(pty.Expect("1(Enable)="));
    }
    ASSERT_TRUE(pty.WaitReading());
    pty.HangUp();
    // The launcher ends with the last process of the board.
    EXPECT_NE(pty.Wait(), -1);
    // A hang-up may first be seen as end of input at the prompt.
    const std::string totals = Totals();
    EXPECT_TRUE(totals == "1/1/0" || (inPrompt && totals == "2/1/1")) << totals;
    fs::remove(ReportPath());
  }
}

TEST_F(FaultsOnTheBoard, MissingDirectoriesLeaveTheMenuUsable) {
  // The report's directory is missing, and the home of the cross-module test was never created.
  Pty& pty = StartProgram({"sh", "-c", "rm -r /tmp/var/log; exec cvntester"});
  ASSERT_TRUE(pty.Expect("\nwrite fail!\n"));
  ASSERT_TRUE(Type(pty, {{kChoice, "3"}, {kChoice, "2"}, {kChoice, "15"}, {kJudge, "Y"}}));
  ASSERT_TRUE(pty.Expect("Test Report file open fail!!!(you can ignore this)\n"));
  ASSERT_TRUE(Type(pty, {{kChoice, "p"}, {kChoice, "p"}, {kChoice, "5"}, {kChoice, "0"}}));
  ASSERT_TRUE(Type(pty, {{kChoice, "0"},
                         {kChoice, "4"},
                         {"Please select: ", "1"},
                         {"Your Choose:", ""},
                         {kChoice, "q"}}));
  EXPECT_EQ(pty.Wait(), 0);
}

}  // namespace
