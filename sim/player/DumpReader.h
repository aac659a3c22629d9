// Reads a dump or golden file back into the values of its rows.
#pragma once

#include <filesystem>
#include <vector>

#include "DumpFormat.h"

namespace player {

/// The rows of a stage's file, without title and end. Throws std::runtime_error that names the
/// file if it cannot be read or has a malformed row.
std::vector<FrameValues> ReadDump(const std::filesystem::path& path, Stage stage);

}  // namespace player
