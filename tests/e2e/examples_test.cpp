// The examples in the documents: commands are run, sessions are typed, and the output is compared.
//
// A comment before a code block makes it an example:
//   <!-- example -->            runs the lines after "$ " with the shell, in order
//   <!-- example, typed: 3 Q -->
//                               starts the first command on a terminal and types these words; a
//                               block without a command continues the previous session. The word
//                               "$" runs the next command of the second terminal, an indented line
//                               that begins with "$ ", once the line before it was printed
//   <!-- file: NAME -->         writes the block to a file
//   <!-- run: COMMAND -->       runs COMMAND without showing it
//   <!-- typed: 3 2 Q -->       types words without showing the output
// In the expected output "…" matches any text, and a line of "…" any lines. Times and dates are not
// compared. The output of a session starts at the first line printed since the words were typed.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "BoardFixture.h"

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr int kLimitMs = 120'000;  // playing a file takes a while
// Ends of the prompts of sessions.
constexpr const char* kPrompts[] = {
    " choice : ", "'N' ",      ")=",          "[100]: ",  "setting):", "keep): ", "rounds: ",
    "(HDMI4);\n", "(wid_1)\n", "(960*540)\n", "(Win1)\n", "(DRM);\n",  "1(No)\n", "(Close)\n"};

struct Example {
  int line = 0;        // in the document
  std::string hidden;  // command that the document does not show
  std::string file;    // to which the block is written
  bool isTyped = false;
  Lines keys;
  Lines block;

  /// A command of the second terminal, and the line of output that it follows.
  struct Aside {
    std::string after;
    std::string command;
  };
  std::vector<Aside> asides;
};

Lines LinesOf(const std::string& text) {
  std::istringstream in(text);
  Lines lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

Lines Words(const std::string& text) {
  std::istringstream in(text);
  Lines words;
  for (std::string word; in >> word;) words.push_back(word);
  return words;
}

/// Moves the commands of the second terminal from the block to `asides`.
void SeparateAsides(Example& example) {
  const std::regex aside(" {8,}\\$ (.*)");
  std::string last;
  Lines block;
  for (const std::string& line : example.block) {
    std::smatch match;
    if (std::regex_match(line, match, aside)) {
      example.asides.push_back({last, match[1]});
    } else {
      block.push_back(line);
      if (line != "…") last = line;
    }
  }
  example.block = block;
}

std::vector<Example> ExamplesIn(const fs::path& document) {
  const std::regex marker("<!-- (example|file|run|typed)(?:, typed)?(?:: (.*))? -->");
  const Lines lines = LinesOf(test::FileText(document));
  std::vector<Example> examples;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    std::smatch match;
    if (!std::regex_match(lines[i], match, marker)) continue;
    Example example;
    example.line = static_cast<int>(i) + 1;
    if (match[1] == "run") {
      example.hidden = match[2];
    } else if (match[1] == "typed") {
      example.isTyped = true;
      example.keys = Words(match[2]);
    } else {
      if (match[1] == "file") example.file = match[2];
      example.isTyped = match[1] == "example" && match[2].matched;
      example.keys = Words(match[2]);
      for (i += 2; i < lines.size() && lines[i] != "```"; ++i) example.block.push_back(lines[i]);
      if (example.isTyped) SeparateAsides(example);
    }
    examples.push_back(example);
  }
  return examples;
}

/// A line without colours, times, dates and trailing blanks, and without what was overwritten.
std::string Comparable(std::string line) {
  line = std::regex_replace(line, std::regex(".*\r\x1b\\[K"), "");  // steps of a slow build
  line = std::regex_replace(line, std::regex("\x1b\\[[0-9;]*[A-Za-z]|\r|[ \t]+$"), "");
  line = std::regex_replace(line, std::regex("\\d+\\.\\d{3} s"), "SECONDS");
  line = std::regex_replace(line, std::regex("^ *\\d+\\.\\d{6} +(\\d+\\.\\d us )?\\d+/\\d+"),
                            "TIME PROCESS");
  line = std::regex_replace(line, std::regex("\\d\\d_\\d\\d_\\d\\d_\\d\\d_\\d\\d|\\d{4}_\\d{6}"),
                            "DATE");
  return std::regex_replace(line, std::regex("[ \t]+$"), "");
}

/// A line of expected output as a regular expression.
std::regex PatternOf(const std::string& expected) {
  static const std::regex kSpecial(R"([.^$|()\[\]{}*+?\\/])");
  const std::string escaped = std::regex_replace(Comparable(expected), kSpecial, R"(\$&)");
  return std::regex(std::regex_replace(escaped, std::regex("…"), ".*"));
}

/// Whether `lines` match `expected`; if `isOpen`, more lines may follow.
testing::AssertionResult AreAsShown(const Lines& expected, Lines lines, bool isOpen) {
  for (std::string& line : lines) line = Comparable(line);
  // Where in `lines` a match of the expected lines so far may end.
  std::vector<bool> ends(lines.size() + 1);
  ends[0] = true;
  for (const std::string& line : expected) {
    std::vector<bool> next(lines.size() + 1);
    const std::regex pattern = PatternOf(line);
    for (std::size_t at = 0; at <= lines.size(); ++at) {
      if (line == "…")
        next[at] = ends[at] || (at > 0 && next[at - 1]);
      else if (at > 0 && ends[at - 1])
        next[at] = std::regex_match(lines[at - 1], pattern);
    }
    if (std::ranges::find(next, true) == next.end()) {
      testing::AssertionResult failure = testing::AssertionFailure();
      failure << "not printed: " << line << "\nthe output:\n";
      for (const std::string& printed : lines) failure << printed << '\n';
      return failure;
    }
    ends = next;
  }
  return isOpen || ends.back() ? testing::AssertionSuccess()
                               : testing::AssertionFailure() << "more is printed than expected";
}

class Examples : public test::BoardFixture, public testing::WithParamInterface<const char*> {
 protected:
  void SetUp() override {
    if (fs::path(CVN_BUILD_DIRECTORY) != fs::path(CVN_SOURCE_DIRECTORY) / "build/release")
      GTEST_SKIP() << "this is not the build that run.sh starts";
    BoardFixture::SetUp();
    if (IsSkipped()) return;
    const std::string document = GetParam();
    if (Sandbox() != "bwrap" && (document == "docs/RECORDING.md" || document == "docs/FARM.md"))
      GTEST_SKIP() << "needs the board in namespaces";
    // Builds outdated targets first; their output would appear in the first example.
    ASSERT_EQ(test::RunShell(CVN_SOURCE_DIRECTORY "/run.sh -- --version").status, 0);
    // A checkout as shown in the document, with a separate board.
    directory_ = Board().parent_path() / "checkout";
    fs::create_directory(directory_);
    for (const std::string name : {"build", "sim", "tools"})
      fs::create_directory_symlink(fs::path(CVN_SOURCE_DIRECTORY) / name, directory_ / name);
    std::ofstream(directory_ / "run.sh")
        << "#!/bin/sh\nexec " CVN_SOURCE_DIRECTORY "/run.sh --board ./board \"$@\"\n";
    fs::permissions(directory_ / "run.sh", fs::perms::owner_all);
  }

  void Play(const Example& example) {
    if (!example.hidden.empty()) {
      EXPECT_EQ(Shell(example.hidden).status, 0) << example.hidden;
    } else if (!example.file.empty()) {
      std::ofstream file(directory_ / example.file);
      for (const std::string& line : example.block) file << line << '\n';
    } else if (example.isTyped) {
      PlaySession(example);
    } else {
      PlayCommands(example);
    }
  }

 private:
  void PlayCommands(const Example& example) {
    Lines expected;
    for (std::size_t i = 0; i < example.block.size();) {
      const std::string command = TakeCommand(example.block, i);
      for (expected.clear(); i < example.block.size() && !IsCommand(example.block[i]); ++i)
        expected.push_back(example.block[i]);
      EXPECT_TRUE(AreAsShown(expected, LinesOf(Shell(command).output), false)) << command;
    }
  }

  static bool IsCommand(const std::string& line) { return line.starts_with("$ "); }

  /// The command at `lines[at]`, including lines continued by a backslash; advances `at` past it.
  static std::string TakeCommand(const Lines& lines, std::size_t& at) {
    std::string command = lines[at++].substr(2);
    while (command.ends_with("\\") && at < lines.size()) command += "\n" + lines[at++];
    return command;
  }

  test::ShellResult Shell(const std::string& command) const {
    return test::RunShell("cd " + test::Quoted(directory_.string()) + " && { " + command +
                          "\n} </dev/null");
  }

  /// Waits until the session shows a prompt after the first `from` bytes of its output. Returns
  /// false if the session ends. Programs started by the session may read the terminal too, so
  /// waiting for a read is not enough.
  bool IsAsking(std::size_t from) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(kLimitMs);
    while (std::chrono::steady_clock::now() < limit && pty_->WaitReading(kLimitMs)) {
      const std::string& all = pty_->Transcript();
      const std::string end =
          std::regex_replace(all.substr(std::max(from, all.size() < 80 ? 0 : all.size() - 80)),
                             std::regex("\x1b\\[[0-9;]*[A-Za-z]"), "");
      if (std::ranges::any_of(kPrompts, [&](const char* prompt) { return end.ends_with(prompt); }))
        return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
  }

  /// Waits until `line` is in the session's output after the first `from` bytes.
  bool IsPrinted(const std::string& line, std::size_t from) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(kLimitMs);
    while (pty_->Transcript().find(line, from) == std::string::npos) {
      if (std::chrono::steady_clock::now() > limit) return false;
      (void)pty_->WaitReading(20);
    }
    return true;
  }

  void PlaySession(const Example& example) {
    std::size_t at = 0;
    if (!example.block.empty() && IsCommand(example.block[0])) {
      const std::string command = TakeCommand(example.block, at);
      pty_.reset();
      pty_ = std::make_unique<test::Pty>(
          Lines{"bash", "-c", command},
          test::PtyOptions{.directory = directory_.string(), .echo = true});
      begin_ = 0;
    }
    ASSERT_NE(pty_, nullptr) << "no session to type into";
    auto aside = example.asides.begin();
    std::size_t typedAt = 0;
    for (std::size_t i = 0; i < example.keys.size(); ++i) {
      if (example.keys[i] == "$") {
        ASSERT_NE(aside, example.asides.end()) << "no command for the second terminal";
        ASSERT_TRUE(IsPrinted(aside->after, typedAt)) << pty_->Transcript();
        EXPECT_EQ(Shell(aside->command).status, 0) << aside->command;
        ++aside;
        continue;
      }
      ASSERT_TRUE(IsAsking(0)) << pty_->Transcript();
      typedAt = pty_->Transcript().size();
      pty_->SendLine(example.keys[i]);
      if (i + 1 < example.keys.size() && example.keys[i + 1] == "$") continue;
      ASSERT_TRUE(IsAsking(typedAt) || pty_->ExpectEnd(kLimitMs)) << pty_->Transcript();
    }
    const Lines expected(example.block.begin() + static_cast<std::ptrdiff_t>(at),
                         example.block.end());
    EXPECT_TRUE(AreAsShown(expected, LinesOf(pty_->Transcript().substr(begin_)), true));
    begin_ = pty_->Transcript().size();
  }

  fs::path directory_;
  std::unique_ptr<test::Pty> pty_;
  std::size_t begin_ = 0;  // of the output that has not been compared yet
};

TEST_P(Examples, MatchTheDocument) {
  const std::vector<Example> examples = ExamplesIn(fs::path(CVN_SOURCE_DIRECTORY) / GetParam());
  EXPECT_FALSE(examples.empty());
  for (const Example& example : examples) {
    SCOPED_TRACE(std::string(GetParam()) + ":" + std::to_string(example.line));
    Play(example);
  }
}

INSTANTIATE_TEST_SUITE_P(Documents, Examples,
                         testing::Values("README.md", "docs/UNATTENDED.md", "docs/PLAYBACK.md",
                                         "docs/RECORDING.md", "docs/RECEIVERS.md", "docs/PANEL.md",
                                         "docs/REPORT.md", "docs/FARM.md", "sim/README.md"),
                         [](const auto& document) {
                           std::string name = document.param;
                           std::erase_if(name, [](char c) { return !std::isalnum(c); });
                           return name;
                         });

}  // namespace
