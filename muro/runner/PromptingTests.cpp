#include "PromptingTests.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "Text.h"

namespace runner {
namespace {

struct Row {
  std::string_view moduleClass;
  std::string_view tests;  // numbers with blanks between
};

constexpr Row kPromptingTests[] = {
    {"Hdcp2Module", "4 5 6 7 8 9"},
    {"VfeHdmiModule", "0 1 2 3 4 5 7 8 10 11 13 14 16"},
    {"VfeVby1rxModule", "0 1 2"},
    {"VscModule",
     "0 1 2 5 6 8 11 12 13 14 16 17 18 19 20 21 22 23 24 25 26 27 28 33 34 35 36 37 39"},
    {"VpqModule",
     "4 5 6 7 9 10 11 12 13 14 15 16 17 18 19 20 21 22 23 24 25 28 30 31 32 33 34 35 36 37 38 39 "
     "40 41 42"},
    {"VpqExtModule",
     "2 4 6 8 10 12 14 16 18 20 22 24 25 27 32 35 36 38 41 43 45 47 49 50 52 53 54 57 58 59 60 61 "
     "62 66 68 70 72 74 76 78 80 83 84 88 92 96 97 98 99 100 101 102"},
    {"VbeModule", "0 2 3 5 20 21 22 23 24 25 26 30 31 32 34 35 36 40"},
    {"UTVfeHdmiModule", "10 12 12.2 12.3 12.4 13 13.2 14 15 16 17"},
    {"CRlinkModule", "26"},
    {"K2vHalDeviceModule", "3"},  // polls until somebody ends it
    {"CMplaybackModule", "1 2 3 4 5 6 8 12 14 15 17 18 19 20 21 22 23 24 25"},
    {"CMAutoTest", "1 2 3 4"},
};

}  // namespace

bool Prompts(const std::string& id) {
  for (const Row& row : kPromptingTests) {
    if (!id.starts_with(row.moduleClass) || id[row.moduleClass.size()] != '/') continue;
    const std::vector<std::string> tests = Split(row.tests, ' ');
    return std::ranges::find(tests, id.substr(row.moduleClass.size() + 1)) != tests.end();
  }
  return false;
}

}  // namespace runner
