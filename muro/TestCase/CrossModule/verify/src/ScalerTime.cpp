#include "ScalerTime.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "RowReader.h"

namespace {

/// Indexes of the columns by which rows of both stages are matched.
struct Columns {
  std::size_t count;
  std::size_t frame;
  std::size_t clock;
  std::size_t checksum;
  std::size_t pts;  // of the video output
};

constexpr Columns kScaler{std::size(kScalerColumns), ColumnOf(kScalerColumns, Unit::kFrame),
                          ColumnNamed(kScalerColumns, "90k_counter"),
                          ColumnNamed(kScalerColumns, "crc_vgip"), 0};
constexpr Columns kVo{std::size(kVoColumns), ColumnOf(kVoColumns, Unit::kFrame),
                      ColumnNamed(kVoColumns, "90k_counter"), ColumnNamed(kVoColumns, "crc_vgip"),
                      ColumnNamed(kVoColumns, "pts.L")};

/// A row of either stage.
struct InputRow {
  int32_t frame = 0;
  uint32_t clock = 0;
  uint32_t checksum = 0;
  uint32_t pts = 0;
};

uint32_t Hexadecimal(std::string_view text) {
  uint32_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value, 16);
  return value;
}

/// Calls `act` with the index and contents of every whole row.
template <class Act>
void ForEachRow(const std::string& path, const Columns& columns, Act act) {
  RowReader file(path);
  file.NextLine();
  std::array<std::string_view, kMaxItems> fields;
  std::string_view row;
  for (int64_t place = 0; file.NextFilled(row); ++place) {
    if (SplitRow(row, {',', ' '}, std::span(fields).first(columns.count)) < columns.count) continue;
    act(place, InputRow{ToNumber(fields[columns.frame]), Hexadecimal(fields[columns.clock]),
                        Hexadecimal(fields[columns.checksum]), Hexadecimal(fields[columns.pts])});
  }
}

/// A row of the scaler whose time is searched, and the result.
struct Wanted {
  InputRow row = {};
  int64_t distance = std::numeric_limits<int64_t>::max();
  std::optional<uint32_t> pts = {};
};

/// Distance of a row of the video output from the scaler's: the same frame is nearest, then the
/// last one that was output before it.
int64_t DistanceOf(const InputRow& scaler, const InputRow& vo) {
  constexpr int64_t kAfter = int64_t{1} << 32;
  if (scaler.frame == vo.frame) return 0;
  const int64_t ticks = static_cast<int32_t>(scaler.clock - vo.clock);
  return ticks >= 0 ? ticks + 1 : kAfter - ticks;
}

/// A truncated dump is identified by its last row.
int64_t FirstPlaceOf(const FrameEvent& event) {
  return event.kind == EventKind::kCut ? std::max<int64_t>(event.place - 1, 0) : event.place;
}

}  // namespace

void GiveScalerTime(StageEvents& scaler, const std::string& scalerGolden,
                    const std::string& voGolden) {
  std::map<int64_t, Wanted> byPlace;
  for (const FrameEvent& event : scaler.events) {
    byPlace[FirstPlaceOf(event)];
    byPlace[event.placeEnd - 1];
  }
  std::multimap<uint32_t, Wanted*> byChecksum;
  if (byPlace.empty()) return;
  ForEachRow(scalerGolden, kScaler, [&](int64_t place, const InputRow& row) {
    const auto at = byPlace.find(place);
    if (at == byPlace.end()) return;
    at->second.row = row;
    byChecksum.emplace(row.checksum, &at->second);
  });
  ForEachRow(voGolden, kVo, [&](int64_t, const InputRow& row) {
    const auto [first, last] = byChecksum.equal_range(row.checksum);
    for (auto it = first; it != last; ++it) {
      const int64_t distance = DistanceOf(it->second->row, row);
      if (distance >= it->second->distance) continue;
      it->second->distance = distance;
      it->second->pts = row.pts;
    }
  });
  for (FrameEvent& event : scaler.events) {
    const auto& first = byPlace[FirstPlaceOf(event)].pts;
    const auto& last = byPlace[event.placeEnd - 1].pts;
    if (first && last) event.pts = PtsRange{*first, *last};
  }
}
