// Marks in a test's console output that report to the runner when the test needs the operator, and
// its remarks. They travel in the output itself, so their position in it is exact.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "ConsoleInput.h"

namespace runner {

/// A text that no test prints by chance, different in every call.
std::string MakeMarkKey();

/// From now on this process marks the places in its standard output where it waits for input, and
/// writes the remarks, findings and files of tests into it.
void MarkWaiting(const std::string& key);

/// As `MarkWaiting`, and also marks the beginning of tests and the typed input, with the id of the
/// test that read it.
void MarkSession(const std::string& key);

/// Separates marks from output.
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

  /// Processes the next bytes of output. An incomplete mark is kept until more bytes arrive.
  void Read(std::string_view bytes);
  /// Signals the end of the output: passes on what was kept.
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
