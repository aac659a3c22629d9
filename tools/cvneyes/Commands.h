// What cvneyes does: judge, learn, calibrate, make references.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "Judgement.h"

namespace eyes {

/// Does the command of a command line (without the program's name). The last line of `out` is the
/// reason. Throws UseError for what cannot be judged.
Answer RunCommandLine(const std::vector<std::string>& words, std::ostream& out);

/// Text of --help.
std::string HelpText();

}  // namespace eyes
