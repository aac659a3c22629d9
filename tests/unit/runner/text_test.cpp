// Cleaning the output of tests for files, and marks in the output.
#include <gtest/gtest.h>

#include "runner/ConsoleMarks.h"
#include "runner/Problem.h"
#include "runner/Text.h"

namespace {

TEST(TextTest, FilesContainOnlyCleanText) {
  const struct {
    std::string text;
    std::string clean;
  } cases[] = {
      {"plain\n\tline\r\n", "plain\n line\n"},
      {"\033[1;31mred\033[m", "red"},
      {"\033]0;title\atext\033_cvn\033\\end", "textend"},
      {"cut \033[1;3", "cut "},
      {"\033", ""},
      {std::string("bell\a null\0\x7f", 12), "bell  null  "},
      {"\xc3\xbc\xe2\x82\xac\xf0\x9f\x93\xba", "\xc3\xbc\xe2\x82\xac\xf0\x9f\x93\xba"},
      {"\xff\xfe", "\xef\xbf\xbd\xef\xbf\xbd"},
      {"\xc3(", "\xef\xbf\xbd("},                // truncated
      {"\xc0\xaf", "\xef\xbf\xbd\xef\xbf\xbd"},  // overlong
      {"\xed\xa0\x80", "\xef\xbf\xbd"},          // a surrogate
      {"\xef\xbf\xbf", "\xef\xbf\xbd"},          // not an XML character
      {"\xc2\x85", "\xef\xbf\xbd"},              // an ISO 6429 control character
      {"\xf4\x90\x80\x80", "\xef\xbf\xbd"},      // beyond Unicode
      {"\xe2\x82", "\xef\xbf\xbd"},              // ends in the middle
  };
  for (const auto& [text, clean] : cases)
    EXPECT_EQ(runner::CleanText(text), clean) << runner::Escaped(text);
}

TEST(TextTest, EscapedBytesAreRestoredExactly) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  const std::string escaped = runner::Escaped(all);
  EXPECT_EQ(escaped.find_first_of("\t\n\033"), std::string::npos);
  EXPECT_EQ(runner::Unescaped(escaped), all);
  EXPECT_EQ(runner::Escaped("\n\r\t\033\\\x01\x7f"), "\\n\\r\\t\\e\\\\\\x01\\x7f");
  for (const char* wrong : {"\\", "\\q", "\\x1", "\\xZZ", "\\x4G"})
    EXPECT_EQ(runner::Unescaped(wrong), std::nullopt) << wrong;
}

TEST(TextTest, GlobOfATextMatchesOnlyThatText) {
  const std::string text = "0(Off), [1]? *\\";
  EXPECT_TRUE(runner::MatchesGlob(runner::GlobOf(text), text));
  EXPECT_FALSE(runner::MatchesGlob(runner::GlobOf(text), "0(Off), [1]x *\\"));
}

TEST(TextTest, ProblemsAreOneLineWithoutControlSequences) {
  testing::internal::CaptureStderr();
  runner::PrintProblem("answers:1: unknown backslash in '\\\033[2J\nx'");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "cvntester: answers:1: unknown backslash in '\\ x'\n");
}

TEST(MarksTest, EachKeyIsAnotherRandomNumber) {
  const std::string key = runner::MakeMarkKey();
  EXPECT_EQ(key.size(), 16U);
  EXPECT_EQ(key.find_first_not_of("0123456789abcdef"), std::string::npos) << key;
  EXPECT_NE(key, runner::MakeMarkKey());
}

TEST(MarksTest, MarksAreFoundHoweverTheOutputIsSplit) {
  const std::string key = "0123";
  const std::string marked =
      "a "
      "prompt=\033_cvn0123?L\033\\more\033[1m\033_cvn\033_cvn0123!KVscModule/"
      "1\t\\x1b\033\\end\033_cvn0123#a; b\033\\.\033_cvn01";
  for (std::size_t cut = 0; cut <= marked.size(); ++cut) {
    std::string heard;
    runner::MarkReader reader(
        key, {[&](std::string_view text) { heard += text; },
              [&](console::Input kind) { heard += kind == console::Input::kLine ? "<L>" : "<?>"; },
              [&](console::Input kind, const std::string& id, const std::string& text) {
                heard += "<" + id + (kind == console::Input::kKey ? " key " : " ? ") +
                         runner::Escaped(text) + ">";
              },
              [&](const std::string& text) { heard += "<remark " + text + ">"; }});
    reader.Read(marked.substr(0, cut));
    reader.Read(marked.substr(cut));
    reader.End();
    EXPECT_EQ(heard,
              "a prompt=<L>more\033[1m\033_cvn<VscModule/1 key \\e>end<remark a; b>.\033_cvn01")
        << "cut at " << cut;
  }
}

}  // namespace
