#include "reader/Recording.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <queue>
#include <sstream>
#include <utility>

namespace record {
namespace {

constexpr uint64_t kMostPacketBytes = uint64_t{256} << 20;

std::string Between(const std::string& text, std::string_view begin, std::string_view end) {
  const size_t from = text.find(begin);
  if (from == std::string::npos) return {};
  const size_t to = text.find(end, from + begin.size());
  if (to == std::string::npos) return {};
  return text.substr(from + begin.size(), to - from - begin.size());
}

Salt ParseSalt(const std::string& hex) {
  Salt salt{};
  for (size_t i = 0; i < salt.size() && 2 * i + 2 <= hex.size(); ++i) {
    salt[i] = static_cast<uint8_t>(std::strtoul(hex.substr(2 * i, 2).c_str(), nullptr, 16));
  }
  return salt;
}

bool IsStream(const std::filesystem::directory_entry& entry) {
  return entry.is_regular_file() && entry.path().filename().string().starts_with("stream-");
}

}  // namespace

MarkText ReadMark(const Event& event) {
  ByteReader reader(event.payload);
  MarkText mark;
  const bool isTest = event.number == kTestBegins || event.number == kTestEnds;
  if (isTest) mark.number = static_cast<uint32_t>(reader.Number(4));
  if (event.number == kPrompt) mark.kind = reader.Text();
  mark.text = reader.Text();
  if (event.number == kTestEnds) mark.verdict = reader.Text();
  return mark;
}

StreamReader::StreamReader(std::filesystem::path path, const Description& description)
    : path_(std::move(path)), description_(description) {}

bool StreamReader::End(const std::string& problem) {
  isAtEnd_ = true;
  packet_ = {};
  if (problem_.empty()) problem_ = problem;
  return false;
}

// The file is reopened for each packet, so that thousands of threads do not run out of descriptors.
bool StreamReader::ReadPacket() {
  std::ifstream file(path_, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(offset_));
  PacketHeader header{};
  file.read(reinterpret_cast<char*>(&header), sizeof header);
  const auto got = static_cast<size_t>(file.gcount());
  const std::string at = " at byte " + std::to_string(offset_);
  if (got == 0) return End("");
  if (got < sizeof header) return End("cut" + at);
  if (header.magic == 0) return End("");  // reserved by a process that has ended
  const uint64_t content = header.contentBits / 8, whole = header.packetBits / 8;
  const bool isRight = header.magic == kPacketMagic && content >= sizeof header &&
                       whole >= content && whole <= kMostPacketBytes;
  if (!isRight) return End("no packet" + at);
  header_ = header;
  packet_.resize(static_cast<size_t>(content) - sizeof header);
  file.read(reinterpret_cast<char*>(packet_.data()), static_cast<std::streamsize>(packet_.size()));
  isCut_ = static_cast<size_t>(file.gcount()) < packet_.size();
  packet_.resize(static_cast<size_t>(file.gcount()));
  offset_ += whole;
  at_ = 0;
  return true;
}

bool StreamReader::PeekBegin(uint64_t& ns) {
  if (!ReadPacket()) return false;
  ns = header_.beginNs;
  offset_ = 0;  // read again when the stream's turn comes
  isCut_ = false;
  packet_ = {};
  return true;
}

bool StreamReader::Next(Event& event) {
  if (isAtEnd_) return false;
  while (at_ >= packet_.size()) {
    if (isCut_) return End("cut at its end");
    if (!ReadPacket()) return false;
  }
  ByteReader reader(Bytes(packet_).subspan(at_));
  event.number = static_cast<uint16_t>(reader.Number(2));
  event.ns = reader.Number(8);
  const Bytes rest = Bytes(packet_).subspan(at_ + reader.Position());
  const uint64_t whole = header_.packetBits / 8;
  const std::string at = " at byte " + std::to_string(offset_ - whole + sizeof header_ + at_);
  std::optional<size_t> size;
  if (event.IsMark() && event.number <= kAnswer) {
    ByteReader mark(rest);
    if (event.number <= kTestEnds) mark.Number(4);
    mark.Text();
    if (event.number == kTestEnds || event.number == kPrompt) mark.Text();
    if (mark.IsGood()) size = mark.Position();
  } else if (!event.IsMark() && event.Call() < description_.Functions().size()) {
    size = SizeOfCall(description_.Functions()[event.Call()], event.IsReturn(), rest);
  } else if (reader.IsGood()) {
    return End("unknown event " + std::to_string(event.number) + at);
  }
  if (!reader.IsGood() || !size) return End((isCut_ ? "cut" : "malformed event") + at);
  event.payload = rest.subspan(0, *size);
  at_ += reader.Position() + *size;
  return true;
}

std::unique_ptr<Recording> Recording::Open(const std::filesystem::path& directory,
                                           std::string& error) {
  std::ifstream file(directory / kMetadataName);
  std::ostringstream text;
  text << file.rdbuf();
  const std::string metadata = text.str();
  if (!metadata.starts_with("/* CTF 1.8 */")) {
    error = "no recording: " + (directory / kMetadataName).string() +
            (file ? " is not a recording" : " cannot be read");
    return nullptr;
  }
  auto recording = std::make_unique<Recording>();
  recording->description_ =
      Description::Parse(Between(metadata, "/* cvn-descriptions\n", "*/"), error);
  if (recording->description_ == nullptr) return nullptr;
  recording->salt_ = ParseSalt(Between(metadata, "salt = \"", "\""));
  std::vector<std::pair<uint64_t, std::unique_ptr<StreamReader>>> streams;
  std::error_code failure;
  for (const auto& entry : std::filesystem::directory_iterator(directory, failure)) {
    if (!IsStream(entry)) continue;
    auto stream = std::make_unique<StreamReader>(entry.path(), *recording->description_);
    uint64_t begin = 0;
    if (!stream->PeekBegin(begin)) begin = UINT64_MAX;
    streams.emplace_back(begin, std::move(stream));
  }
  std::ranges::sort(streams, {}, [](const auto& entry) {
    return std::pair{entry.first, entry.second->Name()};
  });
  for (auto& [begin, stream] : streams) {
    recording->begins_.push_back(begin);
    recording->streams_.push_back(std::move(stream));
  }
  return recording;
}

void Recording::ForEach(const std::function<void(size_t stream, const Event& event)>& each) {
  struct Waiting {
    uint64_t ns;
    size_t stream;
    bool operator>(const Waiting& other) const {
      return std::pair{ns, stream} > std::pair{other.ns, other.stream};
    }
  };
  std::priority_queue<Waiting, std::vector<Waiting>, std::greater<>> queue;
  std::vector<Event> events(streams_.size());
  const auto put = [&](size_t stream) {
    if (streams_[stream]->Next(events[stream])) queue.push({events[stream].ns, stream});
  };
  // A stream is opened when the others have reached its beginning: not all are in memory at once.
  size_t opened = 0;
  for (;;) {
    while (opened < streams_.size() && (queue.empty() || begins_[opened] <= queue.top().ns)) {
      put(opened++);
    }
    if (queue.empty()) return;
    const size_t stream = queue.top().stream;
    queue.pop();
    each(stream, events[stream]);
    put(stream);
  }
}

std::vector<std::string> Recording::Problems() const {
  std::vector<std::string> problems;
  for (const auto& stream : streams_) {
    if (!stream->Problem().empty()) problems.push_back(stream->Name() + ": " + stream->Problem());
  }
  return problems;
}

}  // namespace record
