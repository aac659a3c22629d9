#pragma once

#include <span>
#include <string_view>

namespace sim {

/// The names of all functions that the HAL's headers declare.
std::span<const std::string_view> FunctionNames();

}  // namespace sim
