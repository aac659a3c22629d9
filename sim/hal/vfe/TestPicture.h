// The pictures that HDMI and V-by-One sources can send.
#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>

#include "core/Board.h"

namespace sim {

/// The board's copy of a still image, next to the file with the board's state. The file that was
/// named may go.
std::filesystem::path ImagePath(const SentPicture& sent);

/// What `picture` calls it; a still image is an "image".
std::string PictureName(const SentPicture& sent);

/// The names of all but the still image, by TestPicture.
std::span<const std::string_view> TestPictureNames();

}  // namespace sim
