#include "Defect.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <limits>
#include <stdexcept>

#include "Number.h"

namespace player {

namespace {

constexpr int64_t kDefaultDelayMs = 40;
constexpr int64_t kLongestDelayMs = 3600000;
constexpr int64_t kMostFrames = std::numeric_limits<int32_t>::max();

/// The stages that a picture passes, in this order. Sound takes a separate path.
constexpr Stage kPicturePath[] = {Stage::kOmxIn, Stage::kVdec, Stage::kOmxOut,
                                  Stage::kDvo,   Stage::kVo,   Stage::kScaler};

void TakeNothing(const std::string& detail, Defect& defect);
void TakeChange(const std::string& detail, Defect& defect);
void TakeCount(const std::string& detail, Defect& defect);
void TakeDelay(const std::string& detail, Defect& defect);

struct Kind {
  std::string_view name;
  DefectKind kind;
  bool carriedOn;                                           // by the data, to downstream stages
  void (*take)(const std::string& detail, Defect& defect);  // parses the word after the frame
};

constexpr Kind kKinds[] = {
    {"change", DefectKind::kChange, false, TakeChange},
    {"drop", DefectKind::kDrop, true, TakeCount},
    {"skip", DefectKind::kSkip, true, TakeCount},
    {"repeat", DefectKind::kRepeat, true, TakeCount},
    {"copy", DefectKind::kCopy, true, TakeCount},
    {"freeze", DefectKind::kFreeze, true, TakeCount},
    {"insert", DefectKind::kInsert, true, TakeCount},
    {"reorder", DefectKind::kReorder, true, TakeCount},
    {"corrupt", DefectKind::kCorrupt, true, TakeCount},
    {"late", DefectKind::kLate, true, TakeDelay},
    {"early", DefectKind::kEarly, true, TakeDelay},
    {"jitter", DefectKind::kJitter, true, TakeDelay},
    {"cut", DefectKind::kCut, false, TakeNothing},
    {"truncate", DefectKind::kTruncate, false, TakeNothing},
    {"garble", DefectKind::kGarble, false, TakeCount},
    {"nothing", DefectKind::kNothing, false, TakeNothing},
};

const Kind& KindOf(DefectKind kind) {
  return *std::find_if(std::begin(kKinds), std::end(kKinds),
                       [kind](const Kind& known) { return known.kind == kind; });
}

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

bool IsSameName(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [lower](char x, char y) { return lower(x) == lower(y); });
}

/// "invalid WHAT 'WORD': expected NAME, NAME…"
template <typename Range, typename NameOf>
[[noreturn]] void RefuseName(std::string_view word, const std::string& what, const Range& known,
                             NameOf nameOf) {
  std::string names;
  for (const auto& entry : known) names.append(names.empty() ? "" : ", ").append(nameOf(entry));
  throw std::invalid_argument("invalid " + what + " '" + std::string(word) + "': expected " +
                              names);
}

const Kind& ParseKind(const std::string& name) {
  for (const Kind& known : kKinds) {
    if (known.name == name) return known;
  }
  RefuseName(name, "defect", kKinds, [](const Kind& kind) { return kind.name; });
}

const Column* ParseColumn(Stage stage, const std::string& name) {
  const DumpFormat& format = FormatOf(stage);
  if (const Column* column = FindColumn(format, name); column != nullptr) return column;
  RefuseName(name, "column of " + std::string(format.stageName), format.columns,
             [](const Column& column) { return column.name; });
}

void TakeNothing(const std::string& detail, Defect& defect) {
  if (detail.empty()) return;
  throw std::invalid_argument("unexpected '" + detail + "' after '" +
                              std::string(KindOf(defect.kind).name) + "'");
}

/// "COLUMN" or "COLUMN=VALUE"
void TakeChange(const std::string& detail, Defect& defect) {
  const auto equals = detail.find('=');
  defect.column = ParseColumn(defect.stage, detail.substr(0, equals));
  if (equals == std::string::npos) return;
  defect.value =
      ParseNumber(detail.substr(equals + 1), "value", std::numeric_limits<int32_t>::min(),
                  std::numeric_limits<uint32_t>::max());
}

void TakeCount(const std::string& detail, Defect& defect) {
  if (!detail.empty()) defect.count = ParseNumber(detail, "number of frames", 1, kMostFrames);
}

void TakeDelay(const std::string& detail, Defect& defect) {
  const DumpFormat& format = FormatOf(defect.stage);
  if (FindColumn(format, "90k_counter") == nullptr) {
    throw std::invalid_argument("invalid defect '" + std::string(KindOf(defect.kind).name) +
                                "' for " + std::string(format.stageName) +
                                ", whose dump has no clock");
  }
  defect.value =
      detail.empty() ? kDefaultDelayMs : ParseNumber(detail, "milliseconds", 1, kLongestDelayMs);
}

std::ptrdiff_t PlaceOnPath(Stage stage) {
  return std::find(std::begin(kPicturePath), std::end(kPicturePath), stage) -
         std::begin(kPicturePath);
}

bool IsBefore(Stage stage, Stage other) {
  return other != Stage::kAudio && PlaceOnPath(stage) < PlaceOnPath(other);
}

}  // namespace

Stage ParseStage(std::string_view name) {
  for (const Stage stage : kAllStages) {
    if (IsSameName(FormatOf(stage).stageName, name)) return stage;
  }
  RefuseName(name, "stage", kAllStages, [](Stage stage) { return FormatOf(stage).stageName; });
}

Defect ParseDefect(const std::vector<std::string>& words) {
  const auto wordAt = [&](std::size_t i) { return i < words.size() ? words[i] : std::string(); };
  const bool hasFrame = wordAt(1) != KindOf(DefectKind::kNothing).name;
  if (words.size() < (hasFrame ? 3U : 2U) || words.size() > 4) {
    throw std::invalid_argument("incomplete defect '" + wordAt(0) + "': expected " +
                                std::string(kDefectWords));
  }
  const Stage stage = ParseStage(words[0]);
  const Kind& kind = ParseKind(words[1]);
  Defect defect{stage, kind.kind, hasFrame ? ParseNumber(words[2], "frame", 0, kMostFrames) : 0};
  kind.take(wordAt(hasFrame ? 3 : 2), defect);
  return defect;
}

Defect ParseDefect(std::string_view text) {
  return ParseDefect(Split(text, ':'));
}

std::vector<Defect> DefectsSeenBy(Stage stage, std::span<const Defect> defects) {
  std::vector<Defect> seen;
  std::copy_if(defects.begin(), defects.end(), std::back_inserter(seen), [&](const Defect& defect) {
    return defect.stage == stage ||
           (KindOf(defect.kind).carriedOn && IsBefore(defect.stage, stage));
  });
  return seen;
}

bool WritesNothing(Stage stage, std::span<const Defect> defects) {
  return std::any_of(defects.begin(), defects.end(), [stage](const Defect& defect) {
    return defect.stage == stage && defect.kind == DefectKind::kNothing;
  });
}

}  // namespace player
