#include "replay/Store.h"

namespace record {
namespace {

constexpr size_t kBlockBytes = 1 << 20;

std::string Joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text.append(text.empty() ? "" : ", ").append(name);
  return text;
}

}  // namespace

std::unique_ptr<Store> Store::Load(const std::string& directory, std::string_view description,
                                   std::string& error) {
  auto store = std::make_unique<Store>();
  store->recording_ = Recording::Open(directory, error);
  if (store->recording_ == nullptr) return nullptr;
  const auto own = Description::Parse(description, error);
  const std::vector<std::string> differences = own->Differences(store->Calls());
  if (!differences.empty()) {
    error = "recorded with other headers of the HAL; these differ: " + Joined(differences);
    return nullptr;
  }
  store->streams_.resize(store->recording_->Streams().size());
  store->recording_->ForEach(
      [&](size_t stream, const Event& event) { store->Keep(stream, event); });
  for (size_t i = 0; i < store->streams_.size(); ++i) {
    const StreamReader& reader = *store->recording_->Streams()[i];
    StoredStream& stream = store->streams_[i];
    stream.pid = reader.Pid();
    stream.tid = reader.Tid();
    stream.parentPid = reader.ParentPid();
    stream.isOfHandlers = !stream.events.empty() && stream.events[0].IsEntry() &&
                          own->Functions()[stream.events[0].Call()].isCallback;
  }
  return store;
}

void Store::Keep(size_t index, const Event& event) {
  StoredStream& stream = streams_[index];
  if (payloads_.empty() || payloads_.back().size() + event.payload.size() > kBlockBytes) {
    payloads_.emplace_back().reserve(std::max(kBlockBytes, event.payload.size()));
  }
  std::vector<uint8_t>& block = payloads_.back();
  const size_t begin = block.size();
  block.insert(block.end(), event.payload.begin(), event.payload.end());
  StoredEvent stored = {event.ns, event.number, Bytes(block).subspan(begin), 0};
  if (stored.IsEntry()) {
    for (auto last = stream.events.rbegin(); last != stream.events.rend(); ++last) {
      if (!last->IsEntry()) continue;
      stored.ordinal = last->ordinal + 1;
      break;
    }
  }
  if (event.number == kTestBegins) {
    const MarkText mark = ReadMark(event);
    tests_.push_back({index, stream.events.size(), mark.number, mark.text});
  }
  stream.events.push_back(stored);
}

}  // namespace record
