#include "Panel.h"

#include "core/Events.h"
#include "core/SharedBoard.h"
#include "media/Screen.h"

namespace panel {

const AVFrame& Panel::Look(const sim::Board& board, int64_t nowMs) {
  const Scene scene = SceneOf(board, nowMs, sim::IsPlaying());
  std::vector<const AVFrame*> inputs;
  std::string shown = scene.filters;
  for (const SceneInput& input : scene.inputs) {
    const Sources::Made made = sources_.Make(input, board, nowMs);
    inputs.push_back(made.picture);
    shown.append(" ").append(made.name);
  }
  if (shown != shown_ || scene.changes) {
    Compose(scene, inputs);
    shown_ = shown;
  }
  sources_.DropUnused();
  return *picture_;
}

void Panel::Compose(const Scene& scene, std::span<const AVFrame* const> inputs) {
  if (graph_ == nullptr || filters_ != scene.filters || !graph_->Fits(inputs)) {
    graph_ = std::make_unique<Graph>(scene.filters, inputs);
    filters_ = scene.filters;
  }
  picture_ = graph_->Run(inputs, static_cast<int64_t>(++number_));
}

const AVFrame& Panel::Look() {
  int64_t nowMs = 0;
  {
    // A copy, so that the board is not locked while the picture is made.
    const sim::BoardLock board;
    *board_ = *board;
    nowMs = sim::SimulatedMs(board_->clock);
  }
  return Look(*board_, nowMs);
}

}  // namespace panel
