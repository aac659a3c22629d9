// Answer files: which lines are rejected, and which answer is typed when.
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

#include "TestFrame.h"
#include "runner/Answers.h"

namespace {

using console::Input;
using runner::AnswerRule;

std::string WriteFile(const std::string& text) {
  std::string path = testing::TempDir() + "answers";
  std::ofstream(path) << text;
  return path;
}

std::vector<AnswerRule> Load(const std::string& text) {
  std::vector<AnswerRule> rules;
  EXPECT_EQ(runner::LoadAnswers(WriteFile(text), rules), "");
  return rules;
}

runner::TestEntry Entry(const std::string& id) {
  static const bool ready = (TestFrame::GetInstance()->DoInit(), true);
  for (const auto& entry : runner::AllTests()) {
    if (ready && entry.id == id) return entry;
  }
  ADD_FAILURE() << id;
  return runner::AllTests().front();
}

TEST(AnswersTest, InvalidLinesAreRejectedWithTheirNumber) {
  const struct {
    const char* line;
    const char* problem;
  } cases[] = {
      {"VscModule/1\tprompt", "2 fields; expected TEST-GLOB, PROMPT-GLOB and ANSWER"},
      {"a\tb\tc\td", "4 fields; expected"},
      {"\tprompt\t1", "3 fields, an empty glob; expected"},
      {"a\tb\t\\q", "unknown backslash in '\\q'; expected \\n \\r \\t \\e \\\\ \\xNN"},
      {"a\tb\tkeys ", "no keys after 'keys '"},
  };
  for (const auto& [line, problem] : cases) {
    std::vector<AnswerRule> rules;
    const std::string path = WriteFile(std::string("# a remark\n\n") + line + "\n");
    const std::string said = runner::LoadAnswers(path, rules);
    EXPECT_TRUE(said.starts_with(path + ":3: " + problem)) << said;
  }
  std::vector<AnswerRule> rules;
  EXPECT_EQ(runner::LoadAnswers("/nowhere/x", rules), "/nowhere/x: cannot be read");
}

TEST(AnswersTest, SequencesContinueAndTheirLastAnswerRepeats) {
  const auto rules = Load("VscModule/1\tport*\t1\nVscModule/1\tport*\t2\n*\t*\tdefault\n");
  runner::AnswerScript script(rules, Entry("VscModule/1"));
  EXPECT_EQ(script.Next("port?", Input::kLine), "1\n");
  EXPECT_EQ(script.Next("other?", Input::kLine), "default\n");
  EXPECT_EQ(script.Next("port?", Input::kLine), "2\n");
  EXPECT_EQ(script.Next("port?", Input::kLine), "2\n");
  runner::AnswerScript other(rules, Entry("VscModule/2"));
  EXPECT_EQ(other.Next("port?", Input::kLine), "default\n");
}

TEST(AnswersTest, PromptsMatchFromTheBeginningOfALineToTheEnd) {
  const auto plain = Load("VscModule\tValue=\t7\n");
  const auto next = [&](const char* printed) {
    return runner::AnswerScript(plain, Entry("VscModule/1")).Next(printed, Input::kLine);
  };
  EXPECT_EQ(next("Value="), "7\n");
  EXPECT_EQ(next("\033[1mtrace\n\033[m more\nValue= \n"), "7\n");
  EXPECT_EQ(next("before\n  Value="), "7\n");
  EXPECT_EQ(next("No Value="), std::nullopt);
  EXPECT_EQ(next("Value=\nbut then this"), std::nullopt);
  EXPECT_EQ(next((std::string(100000, 'x') + "\nValue=").c_str()), "7\n");
}

TEST(AnswersTest, OnlyKeysAreTypedAtKeyPrompts) {
  const auto rules = Load("*\t*\tline\nVscModule\t*\tkeys \\e[A+\n");
  for (const Input kind : {Input::kKey, Input::kPoll}) {
    EXPECT_EQ(runner::AnswerScript(rules, Entry("VscModule/1")).Next("", kind), "\033[A+");
    EXPECT_EQ(runner::AnswerScript(rules, Entry("VbeModule/0")).Next("", kind), std::nullopt);
  }
}

TEST(AnswersTest, RecordedAnswersAreReplayed) {
  const runner::Answer answers[] = {
      {false, "/tmp/a b\\c"}, {false, ""}, {false, "keys x"}, {true, "\033\x01\\n "}, {true, "\n"}};
  for (const auto& answer : answers) {
    const std::string prompt = "0(Off), [1]? *=";
    const auto rules = Load(runner::FormatAnswer("VscModule/1", prompt, answer));
    ASSERT_EQ(rules.size(), 1U);
    EXPECT_EQ(rules[0].answers[0].keys, answer.keys);
    EXPECT_EQ(runner::AnswerScript(rules, Entry("VscModule/1"))
                  .Next("before\n" + prompt, answer.keys ? Input::kKey : Input::kLine),
              answer.text + (answer.keys ? "" : "\n"));
  }
}

}  // namespace
