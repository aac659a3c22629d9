// The page's own files, embedded in the program.
#pragma once

#include <string_view>

namespace panel {

extern const std::string_view kIndexHtml;
extern const std::string_view kPageCss;
extern const std::string_view kPageJs;

}  // namespace panel
