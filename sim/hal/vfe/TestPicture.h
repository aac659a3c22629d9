// The pictures that HDMI and V-by-One sources can send.
#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>

#include "core/Board.h"

namespace sim {

/// The board's copy of a still image, next to the file with the board's state. The original file
/// may be deleted.
std::filesystem::path ImagePath(const SentPicture& sent);

/// Its name in the `picture` command; "image" for a still image.
std::string PictureName(const SentPicture& sent);

/// The names of all but the still image, by TestPicture.
std::span<const std::string_view> TestPictureNames();

}  // namespace sim
