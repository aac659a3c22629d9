// The problems of a run, one line each.
#pragma once

#include <string>
#include <vector>

namespace endurance {

class Problems {
 public:
  /// An empty text is ignored.
  void Add(const std::string& problem) {
    if (!problem.empty()) lines_.push_back(problem);
  }
  void Add(const std::vector<std::string>& problems) {
    lines_.insert(lines_.end(), problems.begin(), problems.end());
  }
  /// Adds a problem if `count` is not `expected`.
  void ExpectCount(const std::string& what, std::size_t count, std::size_t expected) {
    if (count != expected)
      Add(what + ": " + std::to_string(count) + " instead of " + std::to_string(expected));
  }
  const std::vector<std::string>& Lines() const { return lines_; }

 private:
  std::vector<std::string> lines_;
};

}  // namespace endurance
