#include "FrameEvent.h"

#include <iterator>

namespace {

constexpr const char* kNames[] = {"dropped", "repeated", "reordered", "damaged", "changed", "late",
                                  "early",   "uneven",   "cut",       "extra",   "broken"};
static_assert(std::size(kNames) == kEventKindCount, "every kind has a name");

}  // namespace

const char* NameOf(EventKind kind) {
  return kNames[static_cast<std::size_t>(kind)];
}
