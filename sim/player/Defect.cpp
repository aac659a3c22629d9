#include "Defect.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "Number.h"

namespace player {

namespace {

constexpr int64_t kDefaultDelayMs = 40;
constexpr int64_t kLongestDelayMs = 3600000;

struct KindName {
  std::string_view name;
  DefectKind kind;
};

constexpr KindName kKinds[] = {
    {"change", DefectKind::kChange}, {"drop", DefectKind::kDrop},
    {"repeat", DefectKind::kRepeat}, {"swap", DefectKind::kSwap},
    {"late", DefectKind::kLate},     {"truncate", DefectKind::kTruncate},
    {"garble", DefectKind::kGarble},
};

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> words(1);
  for (const char c : text) {
    if (c == separator)
      words.emplace_back();
    else
      words.back() += c;
  }
  return words;
}

DefectKind ParseKind(const std::string& name) {
  std::string names;
  for (const KindName& known : kKinds) {
    if (known.name == name) return known.kind;
    names.append(names.empty() ? "" : ", ").append(known.name);
  }
  throw std::invalid_argument("'" + name + "' is no defect: one of " + names);
}

const Column* ParseColumn(Stage stage, const std::string& name) {
  const DumpFormat& format = FormatOf(stage);
  if (const Column* column = FindColumn(format, name); column != nullptr) return column;
  std::string names;
  for (const Column& column : format.columns)
    names.append(names.empty() ? "" : ", ").append(column.name);
  throw std::invalid_argument("'" + name + "' is no column of " + std::string(format.stageName) +
                              ": one of " + names);
}

/// "COLUMN" or "COLUMN=VALUE"
void ParseChange(const std::string& text, Defect& defect) {
  const auto equals = text.find('=');
  defect.column = ParseColumn(defect.stage, text.substr(0, equals));
  if (equals == std::string::npos) return;
  defect.value = ParseNumber(text.substr(equals + 1), "value", std::numeric_limits<int32_t>::min(),
                             std::numeric_limits<uint32_t>::max());
}

void ParseDelay(const std::string& text, Defect& defect) {
  if (FindColumn(FormatOf(defect.stage), "90k_counter") == nullptr) {
    throw std::invalid_argument("'late' needs a clock in the dump, and " +
                                std::string(FormatOf(defect.stage).stageName) + " has none");
  }
  defect.value =
      text.empty() ? kDefaultDelayMs : ParseNumber(text, "milliseconds", 1, kLongestDelayMs);
}

}  // namespace

Stage ParseStage(std::string_view name) {
  std::string names;
  for (const Stage stage : kAllStages) {
    if (FormatOf(stage).stageName == name) return stage;
    names.append(names.empty() ? "" : ", ").append(FormatOf(stage).stageName);
  }
  throw std::invalid_argument("'" + std::string(name) + "' is no stage: one of " + names);
}

Defect ParseDefect(std::string_view text) {
  const std::vector<std::string> words = Split(text, ':');
  if (words.size() < 3 || words.size() > 4) {
    throw std::invalid_argument("'" + std::string(text) +
                                "' is no defect: STAGE:KIND:FRAME[:COLUMN[=VALUE]]");
  }
  Defect defect{ParseStage(words[0]), ParseKind(words[1]),
                ParseNumber(words[2], "frame", 0, std::numeric_limits<int32_t>::max())};
  const std::string detail = words.size() == 4 ? words[3] : "";
  if (defect.kind == DefectKind::kChange)
    ParseChange(detail, defect);
  else if (defect.kind == DefectKind::kLate)
    ParseDelay(detail, defect);
  else if (words.size() == 4)
    throw std::invalid_argument("'" + words[1] + "' takes a frame and nothing else");
  return defect;
}

}  // namespace player
