// The commands of cvneyes: judge, learn, calibrate, make references.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "Judgement.h"

namespace eyes {

/// Runs the command of a command line (without the program's name). The last line of `out` is the
/// reason. Throws UseError if it cannot judge.
Answer RunCommandLine(const std::vector<std::string>& words, std::ostream& out);

/// The text of --help.
std::string HelpText();

}  // namespace eyes
