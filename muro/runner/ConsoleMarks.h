// Marks in a test's console output that tell the runner when it needs the operator, and what it
// remarks. They travel with the output, so it is exact what was printed before.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "ConsoleInput.h"

namespace runner {

/// A text that no test prints by chance, new at every call.
std::string MakeMarkKey();

/// From now on this process marks its standard output where it waits for input, and puts remarks,
/// findings and files of tests into it.
void MarkWaiting(const std::string& key);

/// As `MarkWaiting`, and marks where a test begins, and what was typed, with the id of the test
/// that took it.
void MarkSession(const std::string& key);

/// Takes marked output apart.
class MarkReader {
 public:
  struct Listener {
    std::function<void(std::string_view text)> printed;
    std::function<void(console::Input kind)> waiting;
    /// `testId` is empty in menus.
    std::function<void(console::Input kind, std::string testId, std::string text)> taken;
    std::function<void(std::string text)> remarked = {};
    std::function<void()> testBegins{};
    std::function<void(std::string json)> found = {};
    /// A file, or its next part.
    std::function<void(std::string name, std::string part)> attached = {};
  };

  MarkReader(const std::string& key, Listener listener);

  /// Takes the next bytes of output. An unfinished mark is kept for the next ones.
  void Read(std::string_view bytes);
  /// Nothing more comes: hands out what was kept.
  void End();

 private:
  void Act(std::string_view mark) const;
  void ActOnInput(std::string_view mark) const;
  void ActOnAttachment(std::string_view mark) const;

  std::string begin_;
  Listener listener_;
  std::string kept_;
};

}  // namespace runner
