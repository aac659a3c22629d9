// Permitted includes in the cross-module test: stages are below verify, verify is below playback,
// and there are no cycles.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <regex>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;

/// A header and its source count as one unit: "verify/AvSync".
std::string UnitOf(const fs::path& path) {
  return path.parent_path().parent_path().filename().string() + "/" + path.stem().string();
}

std::map<std::string, std::set<std::string>> Includes() {
  static const std::regex kInclude("^#include \"(.*)\"");
  std::map<std::string, std::set<std::string>> includes;
  for (const auto& entry : fs::recursive_directory_iterator(CVN_CROSS_MODULE_DIR)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream file(entry.path());
    std::set<std::string>& included = includes[UnitOf(entry.path())];
    std::smatch match;
    for (std::string line; std::getline(file, line);) {
      if (!std::regex_search(line, match, kInclude)) continue;
      const fs::path target = entry.path().parent_path() / match[1].str();
      if (fs::exists(target)) included.insert(UnitOf(fs::weakly_canonical(target)));
    }
    included.erase(UnitOf(entry.path()));
  }
  return includes;
}

int LevelOf(const std::string& unit) {
  return unit.starts_with("stages/") ? 0 : unit.starts_with("verify/") ? 1 : 2;
}

TEST(CrossModuleIncludes, NeverIncludeHigherLevels) {
  const auto includes = Includes();
  EXPECT_GT(includes.size(), 30U);
  for (const auto& [unit, included] : includes) {
    for (const std::string& other : included)
      EXPECT_LE(LevelOf(other), LevelOf(unit)) << unit << " includes " << other;
  }
}

TEST(CrossModuleIncludes, HaveNoCycle) {
  const auto includes = Includes();
  std::set<std::string> done;
  std::set<std::string> open;
  std::function<void(const std::string&)> visit = [&](const std::string& unit) {
    if (done.contains(unit)) return;
    EXPECT_TRUE(open.insert(unit).second) << "a cycle through " << unit;
    const auto at = includes.find(unit);
    if (at != includes.end() && !testing::Test::HasFailure())
      for (const std::string& other : at->second) visit(other);
    open.erase(unit);
    done.insert(unit);
  };
  for (const auto& [unit, included] : includes) visit(unit);
}

}  // namespace
