// The rules by which eyes judge: every file is accepted or rejected with one line of text, and all
// regions read lie within the judged picture.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "FuzzFile.h"
#include "Rules.h"

namespace {

void RequireInPicture(const eyes::RulesFile& rules, const eyes::Condition& condition) {
  const eyes::Region part = condition.region.value_or(eyes::Region{});
  fuzz::Require(part.x >= 0 && part.y >= 0 && part.x + part.w <= rules.width &&
                    part.y + part.h <= rules.height,
                "a region is outside of the picture");
}

void RequireWhole(const eyes::RulesFile& rules, const eyes::Rule& rule) {
  fuzz::Require(!rule.conditions.empty(), "a rule without conditions");
  for (const eyes::Condition& condition : rule.conditions) {
    fuzz::Require(!condition.text.empty(), "a condition without text");
    RequireInPicture(rules, condition);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const fuzz::MemoryFile file(std::string_view(reinterpret_cast<const char*>(data), size));
  try {
    const eyes::RulesFile rules = eyes::ReadRules(file.Path());
    for (const eyes::Rule& rule : rules.rules) {
      RequireWhole(rules, rule);
      fuzz::Plant("two conditions with a region",
                  rule.conditions.size() == 2 && rule.conditions[1].region.has_value());
    }
    FindRule(rules, "VscModule/37@2", "PASS or FAIL");
  } catch (const eyes::UseError& error) {
    fuzz::Require(std::string_view(error.what()).find('\n') == std::string_view::npos,
                  "an error is not one line");
  }
  return 0;
}
