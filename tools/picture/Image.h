// Pictures as files and as streams.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Filter.h"

extern "C" {
#include <libavutil/pixfmt.h>
}

namespace picture {

using Bytes = std::vector<uint8_t>;

/// Converts to another pixel format in the same size; YCbCr is BT.601 in limited range, which
/// readers assume by default. Throws std::runtime_error.
Picture Converted(const AVFrame& picture, AVPixelFormat format);

/// Encodes as PNG. Throws std::runtime_error.
Bytes ToPng(const AVFrame& picture);

/// The picture of a PNG or JPEG file. Throws std::runtime_error.
Picture FromFile(const std::string& path);

/// The header of a stream of uncompressed pictures (YUV4MPEG2), and one of its pictures.
std::string Y4mTitle(const AVFrame& picture, int picturesPerSecond);
Bytes ToY4m(const AVFrame& picture);

/// The entire content of a file. Throws std::runtime_error.
Bytes FileBytes(const std::string& path);

}  // namespace picture
