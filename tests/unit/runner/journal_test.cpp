// The journal of a run, truncated at every position.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "runner/ResultDirectory.h"

namespace {

namespace fs = std::filesystem;
using runner::JournalEntry;
using runner::ResultDirectory;
using runner::RunHead;

class JournalTest : public testing::Test {
 protected:
  ~JournalTest() override { fs::remove_all(path_); }

  std::string Text() const {
    std::ifstream file(path_ / "journal");
    return {std::istreambuf_iterator<char>(file), {}};
  }
  void SetText(const std::string& text) const { std::ofstream(path_ / "journal") << text; }

  /// A run of two tests, the second of which has not ended.
  void Write() const {
    ResultDirectory directory;
    ASSERT_EQ(directory.Create(path_, {"/some where", {"--run", "A\tB\n"}, {"A/1", "A/2"}}), "");
    const runner::PlannedTest first{1, 1, "A/1", "A", "", ""};
    ASSERT_TRUE(directory.NoteStart(first));
    ASSERT_TRUE(directory.NoteEnd({first, runner::Verdict::kFail, "a\tmessage", 1.5, "", ""}, 7));
    ASSERT_TRUE(directory.NoteStart({2, 1, "A/2", "A", "", ""}));
  }

  fs::path path_ = testing::TempDir() + "journal";
};

TEST_F(JournalTest, TruncatedJournalIsReadUpToTheLastCompleteLineOrRejected) {
  Write();
  const std::string whole = Text();
  const std::size_t headEnd = whole.find("start\t");
  const std::size_t firstEnd = whole.find('\n', headEnd) + 1;
  for (std::size_t cut = 0; cut <= whole.size(); ++cut) {
    SetText(whole.substr(0, cut));
    RunHead head;
    std::vector<JournalEntry> entries;
    ResultDirectory directory;
    const std::string problem = directory.Open(path_, head, entries);
    ASSERT_EQ(problem.empty(), cut >= headEnd) << cut << ": " << problem;
    if (cut < headEnd) continue;
    EXPECT_EQ(head.words[1], "A\tB\n");
    EXPECT_EQ(entries.size(), cut < firstEnd ? 0U : cut < whole.size() ? 1U : 2U) << cut;
    // The next entry starts on a new line.
    ASSERT_TRUE(directory.NoteStart({9, 1, "A/9", "A", "", ""}));
    EXPECT_NE(Text().find("\nstart\tA/9\n"), std::string::npos) << cut;
  }
}

TEST_F(JournalTest, JournalInUseCannotBeOpenedByAnotherRun) {
  ResultDirectory running;
  ASSERT_EQ(running.Create(path_, {"/", {}, {}}), "");
  RunHead head;
  std::vector<JournalEntry> entries;
  EXPECT_EQ(ResultDirectory().Open(path_, head, entries),
            path_.string() + ": is in use by another run");
}

TEST_F(JournalTest, ReturnsWhatWasWritten) {
  Write();
  RunHead head;
  std::vector<JournalEntry> entries;
  ASSERT_EQ(ResultDirectory().Open(path_, head, entries), "");
  EXPECT_EQ(head.directory, "/some where");
  EXPECT_EQ(head.tests, (std::vector<std::string>{"A/1", "A/2"}));
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_TRUE(entries[0].ended);
  EXPECT_EQ(entries[0].verdict, runner::Verdict::kFail);
  EXPECT_EQ(entries[0].result, 7);
  EXPECT_EQ(entries[0].seconds, 1.5);
  EXPECT_EQ(entries[0].message, "a\tmessage");
  EXPECT_FALSE(entries[1].ended);
}

TEST_F(JournalTest, OtherFilesAndInvalidLinesAreRejected) {
  Write();
  EXPECT_NE(ResultDirectory().Create(path_, {}), "");
  const std::string whole = Text();
  for (const std::string& wrong :
       {whole + "end\tA/1\tPASS\t0\t1\t\n", whole + "end\tA/2\tGOOD\t0\t1\t\n",
        whole + "nonsense\n", std::string("hello\n")}) {
    SetText(wrong);
    RunHead head;
    std::vector<JournalEntry> entries;
    EXPECT_NE(ResultDirectory().Open(path_, head, entries), "") << wrong;
  }
}

TEST(TestLog, KeepsEightMebibytesInTheFileAndTheEndInMemory) {
  const std::string path = testing::TempDir() + "log";
  const auto file = [&] {
    std::ifstream log(path);
    return std::string(std::istreambuf_iterator<char>(log), {});
  };
  const std::string most = std::string((std::size_t{8} << 20) - 3, 'a') + "bcd";
  for (const bool isTooLong : {false, true}) {
    runner::TestLog log;
    ASSERT_TRUE(log.Open(path));
    log.Add(most.substr(0, most.size() - 1));
    log.Add(isTooLong ? "def" : "d");
    if (isTooLong) log.Add("g");
    ASSERT_TRUE(log.Close());
    EXPECT_TRUE(file() == most + (isTooLong ? "\n[3 more bytes were dropped]\n" : ""));
    const std::string tail = std::string((32U << 10) - (isTooLong ? 6 : 3), 'a') + "bcd";
    EXPECT_TRUE(log.CleanTail() == tail + (isTooLong ? "efg" : ""));
  }
  EXPECT_FALSE(runner::TestLog().Open(testing::TempDir() + "no/log"));
}

}  // namespace
