#include "Rules.h"

#include <fnmatch.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace eyes {
namespace {

using Words = std::vector<std::string>;

struct KindName {
  const char* name;
  RuleKind kind;
};
constexpr KindName kKinds[] = {
    {"reference", RuleKind::kReference}, {"black", RuleKind::kBlack},
    {"plain", RuleKind::kPlain},         {"bars", RuleKind::kBars},
    {"frozen", RuleKind::kFrozen},       {"moving", RuleKind::kMoving},
    {"window", RuleKind::kWindow},       {"brighter", RuleKind::kBrighter},
    {"darker", RuleKind::kDarker},       {"sharper", RuleKind::kSharper},
    {"softer", RuleKind::kSofter},       {"changed", RuleKind::kChanged},
};

constexpr struct {
  const char* name;
  Rgb color;
} kColors[] = {
    {"black", {0, 0, 0}},      {"white", {255, 255, 255}}, {"gray", {128, 128, 128}},
    {"red", {255, 0, 0}},      {"green", {0, 255, 0}},     {"blue", {0, 0, 255}},
    {"yellow", {255, 255, 0}}, {"cyan", {0, 255, 255}},    {"magenta", {255, 0, 255}},
};

Words Split(const std::string& text) {
  std::istringstream in(text);
  return {std::istream_iterator<std::string>(in), {}};
}

bool ParseNumber(std::string_view text, int base, int& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  return error == std::errc() && end == text.data() + text.size();
}

Region ParseRegion(const std::string& text, int width, int height) {
  int numbers[4] = {};
  size_t at = 0, found = 0;
  for (; found < 4 && at <= text.size(); ++found) {
    const size_t comma = std::min(text.find(',', at), text.size());
    if (!ParseNumber(std::string_view(text).substr(at, comma - at), 10, numbers[found])) break;
    at = comma + 1;
  }
  const Region region = {numbers[0], numbers[1], numbers[2], numbers[3]};
  constexpr int kLeast = 32;  // pixels, so that there is enough to judge
  const bool fits = region.x >= 0 && region.y >= 0 && region.w >= kLeast && region.h >= kLeast &&
                    region.w <= width - region.x && region.h <= height - region.y;
  if (found == 4 && at > text.size() && fits) return region;
  throw UseError("invalid region '" + text + "': expected X,Y,W,H of " + std::to_string(width) +
                 "x" + std::to_string(height) + " with at least 32 pixels in both directions");
}

/// A window must leave some ground around it.
Region ParseWindow(const std::string& text, int width, int height) {
  constexpr int kLeast = 32;
  const Region window = ParseRegion(text, width, height);
  if (window.w > width - kLeast && window.h > height - kLeast)
    throw UseError("invalid window '" + text + "': it covers the whole picture");
  return window;
}

Rgb ParseColor(const std::string& text) {
  for (const auto& color : kColors) {
    if (text == color.name) return color.color;
  }
  int number = 0;
  if (text.size() != 6 || !ParseNumber(text, 16, number) || number < 0)
    throw UseError("invalid colour '" + text + "': expected a name such as blue, or RRGGBB");
  return {static_cast<double>(number >> 16), static_cast<double>(number >> 8 & 255),
          static_cast<double>(number & 255)};
}

/// Reads words one after the other.
class Reader {
 public:
  explicit Reader(Words words) : words_(std::move(words)) {}
  bool IsAtEnd() const { return at_ == words_.size(); }
  std::string Next(const std::string& what) {
    if (IsAtEnd()) throw UseError(what + " is missing at the end of the rule");
    return words_[at_++];
  }
  /// The words read since a place, separated by blanks.
  size_t Place() const { return at_; }
  std::string Since(size_t place) const {
    std::string text = words_[place];
    for (size_t i = place + 1; i < at_; ++i) text.append(" ").append(words_[i]);
    return text;
  }
  bool Skip(const std::string& word) {
    const bool isThere = !IsAtEnd() && words_[at_] == word;
    at_ += isThere;
    return isThere;
  }

 private:
  Words words_;
  size_t at_ = 0;
};

Condition ParseCondition(Reader& words, int width, int height) {
  const std::string name = words.Next("a condition");
  const auto* kind = std::ranges::find(kKinds, name, &KindName::name);
  if (kind == std::end(kKinds)) {
    std::string names;
    for (const KindName& known : kKinds) names.append(names.empty() ? "" : ", ").append(known.name);
    throw UseError("unknown condition '" + name + "': expected " + names);
  }
  Condition condition{kind->kind, "", "", {}, {}, ""};
  switch (condition.kind) {
    case RuleKind::kReference:
      condition.file = words.Next("the reference's file");
      if (words.Skip("mask")) condition.mask = words.Next("the mask's file");
      break;
    case RuleKind::kPlain:
      condition.color = ParseColor(words.Next("the colour"));
      break;
    case RuleKind::kWindow:
      condition.region = ParseWindow(words.Next("the window"), width, height);
      return condition;
    case RuleKind::kBrighter:
    case RuleKind::kDarker:
    case RuleKind::kSharper:
    case RuleKind::kSofter:
      words.Skip("than");
      words.Skip(kBefore);
      break;
    default:
      break;
  }
  if (words.Skip("region")) condition.region = ParseRegion(words.Next("the region"), width, height);
  return condition;
}

/// Settings of the file, one per line, each preceded by its name.
struct Setting {
  const char* name;
  void (*set)(RulesFile& file, const std::string& value);
};

int ParseCount(const std::string& value, int least, int most) {
  int number = 0;
  if (ParseNumber(value, 10, number) && number >= least && number <= most) return number;
  throw UseError("invalid value '" + value + "': expected " + std::to_string(least) + " to " +
                 std::to_string(most));
}

constexpr Setting kSettings[] = {
    {"from", [](RulesFile& file, const std::string& value) { file.from = value; }},
    {"calibration", [](RulesFile& file, const std::string& value) { file.calibration = value; }},
    {"pictures",
     [](RulesFile& file, const std::string& value) { file.pictures = ParseCount(value, 1, 100); }},
    {"skip",
     [](RulesFile& file, const std::string& value) { file.skipped = ParseCount(value, 0, 1000); }},
    {"size",
     [](RulesFile& file, const std::string& value) {
       if (!file.rules.empty()) throw UseError("the size must be set before the first rule");
       const size_t by = std::min(value.find('x'), value.size());
       file.width = ParseCount(value.substr(0, by), 64, 3840);
       file.height = ParseCount(value.substr(std::min(by + 1, value.size())), 64, 2160);
     }},
    {"trust",
     [](RulesFile& file, const std::string& value) {
       if (value != "black") throw UseError("invalid value '" + value + "': expected black");
       file.trustsBlack = true;
     }},
};

std::string Trimmed(const std::string& text) {
  const size_t begin = text.find_first_not_of(" \t\r");
  if (begin == std::string::npos) return "";
  return text.substr(begin, text.find_last_not_of(" \t\r") + 1 - begin);
}

void ParseSetting(RulesFile& file, const std::string& line) {
  const size_t blank = std::min(line.find(' '), line.size());
  const std::string name = line.substr(0, blank);
  for (const Setting& setting : kSettings) {
    if (name == setting.name) return setting.set(file, Trimmed(line.substr(blank)));
  }
  throw UseError("unknown setting '" + name + "', or a rule without its two tabs");
}

void ParseLine(RulesFile& file, const std::string& line) {
  const size_t first = line.find('\t');
  if (first == std::string::npos) return ParseSetting(file, line);
  const size_t second = line.find('\t', first + 1);
  if (second == std::string::npos)
    throw UseError("malformed rule: expected test, question and conditions, separated by tabs");
  Rule rule{Trimmed(line.substr(0, first)),
            Trimmed(line.substr(first + 1, second - first - 1)),
            Trimmed(line.substr(second + 1)),
            {}};
  rule.conditions = ParseConditions(rule.text, file.width, file.height);
  file.rules.push_back(std::move(rule));
}

/// CRC-32, bit by bit: the files are small.
uint32_t ChecksumOf(const std::string& text) {
  uint32_t crc = UINT32_MAX;
  for (const char character : text) {
    crc ^= static_cast<uint8_t>(character);
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320U : 0);
  }
  return ~crc;
}

bool Matches(const std::string& pattern, const std::string& text) {
  return fnmatch(pattern.c_str(), text.c_str(), 0) == 0;
}

}  // namespace

std::string RulesFile::PathOf(const std::string& name) const {
  return (std::filesystem::path(directory) / name).string();
}

std::vector<Condition> ParseConditions(const std::string& text, int width, int height) {
  Reader words(Split(text));
  std::vector<Condition> conditions;
  do {
    const size_t place = words.Place();
    conditions.push_back(ParseCondition(words, width, height));
    conditions.back().text = words.Since(place);
  } while (words.Skip("and"));
  if (!words.IsAtEnd())
    throw UseError("unexpected '" + words.Next("") + "': expected 'and' or the end of the rule");
  return conditions;
}

RulesFile ReadRules(const std::string& path) {
  std::ifstream in(path);
  if (!in) throw UseError("cannot read " + path);
  const std::string text((std::istreambuf_iterator<char>(in)), {});
  RulesFile file;
  file.directory = std::filesystem::path(path).parent_path().string();
  file.checksum = ChecksumOf(text);
  std::istringstream lines(text);
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    line.resize(line.starts_with('#') ? 0 : std::min(line.find(" #"), line.size()));
    if (Trimmed(line).empty()) continue;
    try {
      ParseLine(file, line);
    } catch (const UseError& error) {
      throw UseError(path + ":" + std::to_string(number) + ": " + error.what());
    }
  }
  return file;
}

const Rule* FindRule(const RulesFile& rules, const std::string& test, const std::string& question) {
  const std::string id = test.substr(0, test.find('@'));  // without the round
  const std::string moduleClass = id.substr(0, id.find('/'));
  for (const Rule& rule : rules.rules) {
    if ((Matches(rule.test, id) || Matches(rule.test, moduleClass)) &&
        Matches(rule.question, question))
      return &rule;
  }
  return nullptr;
}

}  // namespace eyes
