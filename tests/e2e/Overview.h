// The overview of a verification report: one row per stage.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace test {

/// Words of the overview's rows, by stage, such as {"[VDEC]", {"PASS", "599/599", …}}.
std::map<std::string, std::vector<std::string>> Overview(const std::string& report);

/// The stages whose verdict is not PASS, sorted by name; fails the test if the overview does not
/// contain all seven stages.
std::vector<std::string> StagesNotPassed(const std::string& report);

}  // namespace test
