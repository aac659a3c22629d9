// Pictures from a camera, a capture card, a stream, a file, a command or the HAL.
#pragma once

#include <string>

#include "Judgement.h"

namespace eyes {

/// Captures pictures from the source in the rules, in the size and number given there. `from` is
///   command:COMMAND   a shell command's standard output, such as a Y4M stream
///   v4l2:/dev/videoN  a Video4Linux device
///   lavfi:FILTERS     what filters of libavfilter generate
///   hal               the board's own capture, 960x540
///   -                 standard input
///   anything else     a file or an address that ffmpeg's libraries read
/// Throws UseError if there is no picture or if it is damaged.
Captures Capture(const std::string& from, const RulesFile& rules);

/// One picture of a file in its original size. Throws UseError.
Pixels PictureOf(const std::string& path);

}  // namespace eyes
