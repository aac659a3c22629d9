// Writes the operator's answers down.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "ConsoleMarks.h"

namespace runner {

/// Reads the marked output of a console (`MarkSession`) and turns every answer given in a test into
/// one line of an answer file.
class AnswerNotes {
 public:
  struct Listener {
    /// What the console printed, without the marks.
    std::function<void(std::string_view text)> printed;
    /// A line of an answer file, with its newline.
    std::function<void(const std::string& line)> noted;
  };

  AnswerNotes(const std::string& key, Listener listener);

  /// Processes the next bytes of output.
  void Read(std::string_view output) { marks_.Read(output); }
  /// Signals the end of the output.
  void End() { marks_.End(); }

 private:
  void Printed(std::string_view text);
  void Taken(console::Input kind, const std::string& testId, const std::string& text);
  void Forget();

  Listener listener_;
  std::string printed_;  // since the last answer, or since the test began
  std::string prompt_;   // as it was before the operator began to type
  MarkReader marks_;
};

}  // namespace runner
