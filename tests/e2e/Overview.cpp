#include "Overview.h"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

namespace test {

std::map<std::string, std::vector<std::string>> Overview(const std::string& report) {
  const auto start = report.find("-Overview]");
  std::istringstream text(start == std::string::npos ? "" : report.substr(start));
  std::map<std::string, std::vector<std::string>> rows;
  std::string line;
  while (std::getline(text, line) && !line.empty()) {
    std::istringstream words(line);
    std::string stage;
    words >> stage;
    if (stage.starts_with('[')) rows[stage] = {std::istream_iterator<std::string>(words), {}};
  }
  return rows;
}

std::vector<std::string> StagesNotPassed(const std::string& report) {
  std::vector<std::string> stages;
  const auto rows = Overview(report);
  EXPECT_EQ(rows.size(), 7U) << report;
  for (const auto& [stage, words] : rows) {
    if (words.at(0) != "PASS") stages.push_back(stage);
  }
  return stages;
}

}  // namespace test
