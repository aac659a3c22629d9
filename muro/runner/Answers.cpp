#include "Answers.h"

#include <algorithm>

#include "InputFile.h"
#include "Text.h"

namespace runner {
namespace {

constexpr std::string_view kKeys = "keys ";
constexpr char kAllowed[] =
    "; expected TEST-GLOB, PROMPT-GLOB and ANSWER (or keys KEYS), separated by tabs";
// The output since the last answer can be long; the prompt is at its end.
constexpr std::size_t kLongestPrompt = 4096;
constexpr std::size_t kShownText = 80;
constexpr std::size_t kLargestFile = std::size_t{1} << 20;

/// Adds the rule of one line. Returns an error, empty on success.
std::string AddRule(const std::string& line, int number, std::vector<AnswerRule>& rules) {
  const std::vector<std::string> fields = Split(line, '\t');
  if (fields.size() != 3 || fields[0].empty() || fields[1].empty()) {
    return std::to_string(fields.size()) + " fields" +
           (fields.size() == 3 ? ", an empty glob" : "") + kAllowed;
  }
  const bool keys = fields[2].starts_with(kKeys);
  const auto text = Unescaped(std::string_view(fields[2]).substr(keys ? kKeys.size() : 0));
  if (!text)
    return "unknown backslash in '" + CleanLine(fields[2].substr(0, kShownText)) +
           R"('; expected \n \r \t \e \\ \xNN)";
  if (keys && text->empty()) return "no keys after 'keys '" + std::string(kAllowed);
  const auto same = std::ranges::find_if(rules, [&](const AnswerRule& rule) {
    return rule.testGlob == fields[0] && rule.promptGlob == fields[1];
  });
  if (same != rules.end()) {
    same->answers.push_back({keys, *text});
  } else {
    rules.push_back({fields[0], fields[1], {{keys, *text}}, number});
  }
  return "";
}

/// True if the glob matches `prompt` or a suffix of it that starts at the beginning of a line, with
/// or without the leading blanks of that line.
bool MatchesPrompt(const std::string& glob, std::string_view prompt) {
  for (;;) {
    if (MatchesGlob(glob, std::string(prompt)) || MatchesGlob(glob, std::string(Trimmed(prompt))))
      return true;
    const auto newline = prompt.find('\n');
    if (newline == std::string_view::npos) return false;
    prompt.remove_prefix(newline + 1);
  }
}

}  // namespace

std::string LoadAnswers(const std::string& path, std::vector<AnswerRule>& rules) {
  std::string text;
  if (!ReadInputFile(path, kLargestFile + 1, text).empty()) return path + ": cannot be read";
  if (text.size() > kLargestFile) return path + ": is larger than 1 MiB";
  int number = 0;
  for (std::string line : Split(text, '\n')) {
    ++number;
    if (line.ends_with('\r')) line.pop_back();
    if (line.empty() || line[0] == '#') continue;
    const std::string wrong = AddRule(line, number, rules);
    if (!wrong.empty()) return Joined({path, std::to_string(number), " " + wrong}, ":");
  }
  return "";
}

std::string CheckAnswers(const std::string& path, const std::vector<AnswerRule>& rules,
                         const std::vector<TestEntry>& all, const std::vector<TestEntry>& selected,
                         std::vector<std::string>& warnings) {
  for (const AnswerRule& rule : rules) {
    const auto matches = [&](const TestEntry& entry) { return Matches(entry, rule.testGlob); };
    const std::string place = path + ":" + std::to_string(rule.line) + ": '" + rule.testGlob + "'";
    if (std::ranges::none_of(all, matches)) return place + " matches no test";
    if (std::ranges::none_of(selected, matches))
      warnings.push_back(place + " matches no selected test");
  }
  return "";
}

std::string FormatAnswer(const std::string& testId, const std::string& prompt,
                         const Answer& answer) {
  const std::string promptGlob = prompt.empty() ? "*" : GlobOf(prompt);
  // Escaping the first letter keeps a line that begins with "keys " from being read as keys.
  std::string text = Escaped(answer.text);
  if (!answer.keys && text.starts_with(kKeys)) text.replace(0, 1, "\\x6b");
  if (answer.keys) text.insert(0, kKeys);
  return Joined({testId, promptGlob, text}, "\t").append("\n");
}

AnswerScript::AnswerScript(const std::vector<AnswerRule>& rules, const TestEntry& entry) {
  for (const AnswerRule& rule : rules) {
    if (Matches(entry, rule.testGlob)) lines_.push_back({&rule});
  }
}

std::optional<std::string> AnswerScript::Next(std::string_view printed, console::Input kind) {
  if (printed.size() > kLongestPrompt) printed.remove_prefix(printed.size() - kLongestPrompt);
  const std::string clean = CleanText(printed);
  for (Line& line : lines_) {
    const auto& answers = line.rule->answers;
    const Answer& answer = answers[std::min(line.used, answers.size() - 1)];
    if (!answer.keys && kind != console::Input::kLine) continue;
    if (!MatchesPrompt(line.rule->promptGlob, Trimmed(clean))) continue;
    ++line.used;
    return answer.keys ? answer.text : answer.text + '\n';
  }
  return std::nullopt;
}

}  // namespace runner
