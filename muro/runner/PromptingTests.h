// Which tests need their operator before the verdict.
#pragma once

#include <string>

namespace runner {

/// True when the test of this id ("VscModule/31") may read the console before the verdict, or
/// cannot pass unless somebody pulls a cable or ends it. The list is data; a test of the harness
/// holds it against what the tests do.
bool Prompts(const std::string& id);

}  // namespace runner
