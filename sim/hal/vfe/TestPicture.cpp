#include "vfe/TestPicture.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>

#include "core/Areas.h"
#include "core/SharedBoard.h"

namespace sim {
namespace {

namespace fs = std::filesystem;

// By TestPicture.
constexpr std::string_view kNames[] = {"bars", "ramp",  "smpte", "checkerboard",
                                       "box",  "black", "white"};
constexpr std::string_view kImageStarts[] = {"\x89PNG\r\n\x1a\n", "\xff\xd8\xff"};
constexpr char kAllowed[] =
    "bars, ramp, smpte, checkerboard, box, black, white, or a PNG or JPEG file of at most 32 MiB";
constexpr uintmax_t kMostImageBytes = 32U << 20U;

bool IsImage(const fs::path& path) {
  std::error_code error;
  if (!fs::is_regular_file(path, error) || fs::file_size(path, error) > kMostImageBytes)
    return false;
  std::array<char, 8> start = {};
  std::ifstream(path, std::ios::binary).read(start.data(), start.size());
  for (const std::string_view known : kImageStarts) {
    if (std::string_view(start.data(), start.size()).starts_with(known)) return true;
  }
  return false;
}

/// What a source is to send; `file` is empty for all but a still image.
struct PictureOrder {
  TestPicture picture;
  std::string file;
};

PictureOrder ParsePictureOrder(const std::string& word) {
  for (size_t i = 0; i < std::size(kNames); ++i) {
    if (word == kNames[i]) return {static_cast<TestPicture>(i), ""};
  }
  if (!IsImage(word)) RefuseWord("unknown picture", word, kAllowed);
  return {TestPicture::kFile, word};
}

SentPicture Send(Board& board, const PictureOrder& order) {
  if (order.picture != TestPicture::kFile) return {order.picture, 0};
  // A board without a state file has no panel that could show the image.
  const SentPicture sent = {TestPicture::kFile, board.imageCopies + 1};
  std::error_code error;
  if (!StatePath().empty())
    fs::copy_file(order.file, ImagePath(sent), fs::copy_options::overwrite_existing, error);
  if (error) throw CommandError(order.file + " cannot be kept: " + error.message());
  ++board.imageCopies;
  return sent;
}

constexpr std::string_view kVby1Prefix = "vby1-";

SentPicture& SentOf(Board& board, bool isVby1, size_t port) {
  return isVby1 ? board.vby1.sent[port] : board.hdmi.ports[port].sent;
}

Action ParsePicture(const Words& words) {
  const bool isVby1 = words[0].starts_with(kVby1Prefix);
  const auto port =
      static_cast<size_t>(isVby1 ? ParseNumber(words[0].substr(kVby1Prefix.size()),
                                               "V-by-One input", 0, K2V_VBY1RX_PORT_COUNT - 1)
                                 : ParseNumber(words[0], "port", 0, kPortCount - 1));
  const PictureOrder order = ParsePictureOrder(words[1]);
  return [=](Board& board) { SentOf(board, isVby1, port) = Send(board, order); };
}

void DescribeSent(std::string_view prefix, std::span<const SentPicture> all, std::ostream& out) {
  for (size_t port = 0; port < all.size(); ++port) {
    if (all[port].picture == TestPicture::kBars) continue;
    out << "picture of port " << prefix << port << ": " << PictureName(all[port]) << '\n';
  }
}

void Describe(const Board& board, std::ostream& out) {
  std::array<SentPicture, kPortCount> hdmi;
  std::ranges::transform(board.hdmi.ports, hdmi.begin(), &HdmiPort::sent);
  DescribeSent("", hdmi, out);
  DescribeSent(kVby1Prefix, board.vby1.sent, out);
}

constexpr Command kCommands[] = {
    {"picture", "PORT|vby1-PORT bars|ramp|smpte|checkerboard|box|black|white|FILE",
     "select the picture that the port's source sends: a test picture or a PNG or JPEG file", 2, 2,
     ParsePicture},
};

}  // namespace

constinit const Area kTestPictureArea = {kCommands, Describe};

fs::path ImagePath(const SentPicture& sent) {
  return StatePath() + "-image-" + std::to_string(sent.copy);
}

std::string PictureName(const SentPicture& sent) {
  const auto index = static_cast<size_t>(sent.picture);
  return index < std::size(kNames) ? std::string(kNames[index]) : "image";
}

std::span<const std::string_view> TestPictureNames() {
  return kNames;
}

}  // namespace sim
