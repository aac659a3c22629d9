#include "vfe/Edid.h"

#include <algorithm>
#include <span>
#include <vector>

namespace sim {
namespace {

using Bytes = std::span<const uint8_t>;

constexpr uint8_t kCeaTag = 0x02;
constexpr uint8_t kVideo = 2, kExtended = 7;     // tags of data blocks …
constexpr uint8_t kVideo420 = 14, kMap420 = 15;  // … and extended ones
constexpr unsigned kBlockBytes = K2V_HDMI_EDID_BYTES / 2;

/// The code of a short video descriptor; codes up to 64 can be marked as native.
uint32_t CodeOf(uint8_t descriptor) {
  return descriptor > 128 && descriptor <= 192 ? descriptor & 0x7FU : descriptor;
}

struct VideoData {
  std::vector<uint32_t> codes;    // of the video data blocks, in their order
  std::vector<uint32_t> only420;  // of the 4:2:0 video data blocks
  std::vector<uint8_t> map420;    // one bit per code, in the order of `codes`
  bool mapsAll = false;           // an empty map means all codes
};

void Take(uint8_t tag, Bytes payload, VideoData& data) {
  if (tag == kVideo) {
    for (const uint8_t descriptor : payload) data.codes.push_back(CodeOf(descriptor));
  } else if (tag == kExtended && !payload.empty() && payload[0] == kVideo420) {
    for (const uint8_t descriptor : payload.subspan(1)) data.only420.push_back(CodeOf(descriptor));
  } else if (tag == kExtended && !payload.empty() && payload[0] == kMap420) {
    data.map420.assign(payload.begin() + 1, payload.end());
    data.mapsAll = payload.size() == 1;
  }
}

/// The video data of the extension; empty if it is not a CEA-861 extension.
VideoData ReadVideoData(Bytes extension) {
  VideoData data;
  if (extension[0] != kCeaTag) return data;
  const std::size_t end = std::min<std::size_t>(extension[2], kBlockBytes - 1);
  for (std::size_t at = 4; at < end;) {
    const std::size_t size = extension[at] & 0x1FU;
    if (at + 1 + size > end) break;
    Take(extension[at] >> 5, extension.subspan(at + 1, size), data);
    at += 1 + size;
  }
  return data;
}

bool IsMapped(const VideoData& data, uint32_t code) {
  const auto found = std::ranges::find(data.codes, code);
  if (found == data.codes.end()) return false;
  const auto place = static_cast<std::size_t>(found - data.codes.begin());
  if (data.mapsAll) return true;
  return place / 8 < data.map420.size() && (data.map420[place / 8] >> (place % 8) & 1) != 0;
}

}  // namespace

bool Lists420(const uint8_t* edid, uint32_t code) {
  if (code == 0) return false;
  const VideoData data = ReadVideoData(Bytes(edid, K2V_HDMI_EDID_BYTES).subspan(kBlockBytes));
  return std::ranges::count(data.only420, code) != 0 || IsMapped(data, code);
}

}  // namespace sim
