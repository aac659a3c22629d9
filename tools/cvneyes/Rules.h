// The rules file: what must be visible after which test.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Pixels.h"

namespace eyes {

/// A rules file, a picture or an option that cannot be used; the message says why.
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
  std::optional<Region> region;  // the only region that is judged; of kWindow, the window
  Rgb color = {};                // of kPlain
  std::string text;              // as written
};

/// The conditions for a test and a question, all of which must be met.
struct Rule {
  std::string test;      // glob
  std::string question;  // glob
  std::string text;      // as written
  std::vector<Condition> conditions;
};

struct RulesFile {
  std::string directory;  // of the file; names in it are relative to it
  uint32_t checksum = 0;  // of the file's text
  std::string from;       // where captures come from
  std::string calibration;
  int width = 960;  // of the judged picture
  int height = 540;
  int pictures = 3;          // of a capture
  int skipped = 0;           // pictures discarded before them
  bool trustsBlack = false;  // the rig shows black only if the panel does
  std::vector<Rule> rules;

  /// Path of a file that is named in the rules.
  std::string PathOf(const std::string& name) const;
};

/// Names the picture before the test as the reference.
constexpr char kBefore[] = "before";

/// Reads rules. Throws UseError with file and line number.
RulesFile ReadRules(const std::string& path);

/// The first rule that matches a test's id and a question, or nullptr. The pattern applies to the
/// id or to its class.
const Rule* FindRule(const RulesFile& rules, const std::string& test, const std::string& question);

/// Parses the conditions of a rule, for pictures of the given size. Throws UseError.
std::vector<Condition> ParseConditions(const std::string& text, int width, int height);

}  // namespace eyes
