// The panel as someone in front of it sees it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Filter.h"
#include "Scene.h"
#include "Sources.h"

namespace panel {

class Panel {
 public:
  /// What a board shows at a simulated time: planar RGB, kViewWidth x kViewHeight. The picture is
  /// valid until the next call. Throws std::runtime_error if the libraries cannot make it.
  const AVFrame& Look(const sim::Board& board, int64_t nowMs);

  /// The same for the board that this process is attached to.
  const AVFrame& Look();

  /// Increases with every picture that differs from the previous one.
  uint64_t Number() const { return number_; }

 private:
  void Compose(const Scene& scene, std::span<const AVFrame* const> inputs);

  Sources sources_;
  std::unique_ptr<sim::Board> board_ = std::make_unique<sim::Board>();
  std::unique_ptr<Graph> graph_;
  std::string filters_;  // of the graph
  std::string shown_;    // identifies the picture
  Picture picture_;
  uint64_t number_ = 0;
};

}  // namespace panel
