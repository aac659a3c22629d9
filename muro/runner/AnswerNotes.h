// What an operator answers, written down.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "ConsoleMarks.h"

namespace runner {

/// Reads the marked output of a console (`MarkSession`) and makes a line of a file of answers from
/// every answer given in a test.
class AnswerNotes {
 public:
  struct Listener {
    /// What the console printed, without the marks.
    std::function<void(std::string_view text)> printed;
    /// A line of a file of answers, with its newline.
    std::function<void(const std::string& line)> noted;
  };

  AnswerNotes(const std::string& key, Listener listener);

  /// Takes the next bytes of output.
  void Read(std::string_view output) { marks_.Read(output); }
  /// Nothing more comes.
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
