// The rules file: what has to be seen after which test.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Pixels.h"

namespace eyes {

/// A rules file, a picture or an option that cannot be used; the text says why.
class UseError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class RuleKind {
  kReference,
  kBlack,
  kPlain,
  kBars,
  kFrozen,
  kMoving,
  kWindow,
  kBrighter,
  kDarker,
  kSharper,
  kSofter,
  kChanged,
};

/// One condition.
struct Condition {
  RuleKind kind;
  std::string file;              // reference
  std::string mask;              // of the reference; empty: none
  std::optional<Region> region;  // judged alone; of kWindow the window
  Rgb color = {};                // of kPlain
  std::string text;              // as written
};

/// What has to hold for a test and a question, all of it.
struct Rule {
  std::string test;      // glob
  std::string question;  // glob
  std::string text;      // as written
  std::vector<Condition> conditions;
};

struct RulesFile {
  std::string directory;  // that of the file; names in it are relative to it
  uint32_t checksum = 0;  // of the file's text
  std::string from;       // where captures come from
  std::string calibration;
  int width = 960;  // of the judged picture
  int height = 540;
  int pictures = 3;          // of a capture
  int skipped = 0;           // pictures before them
  bool trustsBlack = false;  // the rig shows black only where the panel does
  std::vector<Rule> rules;

  /// Path of a file that is named in the rules.
  std::string PathOf(const std::string& name) const;
};

/// Name of the reference that is the picture before the test.
constexpr char kBefore[] = "before";

/// Reads rules. Throws UseError with file and line.
RulesFile ReadRules(const std::string& path);

/// The first rule that matches a test's id and a question, or nullptr. The pattern
/// is for the id, or for its class.
const Rule* FindRule(const RulesFile& rules, const std::string& test, const std::string& question);

/// Parses the conditions of a rule for pictures of a size. Throws UseError.
std::vector<Condition> ParseConditions(const std::string& text, int width, int height);

}  // namespace eyes
