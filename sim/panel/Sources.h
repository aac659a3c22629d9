// The pictures that a scene is made of.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "Scene.h"

namespace panel {

/// Makes pictures and keeps those that are still in use.
class Sources {
 public:
  /// A picture in planar RGB, or in 10-bit YCbCr if it was written to a frame buffer. It is valid
  /// until DropUnused. Equal names mean equal pictures.
  struct Made {
    const AVFrame* picture;
    std::string name;
  };

  /// The picture of an input at a simulated time. If it cannot be made, such as from a damaged
  /// image file, it is black. Throws std::runtime_error if not even that can be made.
  Made Make(const SceneInput& input, const sim::Board& board, int64_t nowMs);

  /// Drops the pictures that were not requested since the last call.
  void DropUnused();

 private:
  struct Kept {
    Picture picture;
    bool isUsed;
  };
  template <typename Maker>
  Made Keep(const std::string& name, Maker make);
  Made MakeSent(const SentInput& input, int64_t nowMs);
  Made MakePlayed(const PlayedInput& input);
  Made MakeWritten(const WrittenInput& input, const sim::Window& window);
  Made MakeCube(const K2V_VPQ_HDR_3D_LUT_T& table);
  Picture MakeBox(Size size, double rateHz, int64_t number);

  std::map<std::string, Kept> kept_;
  std::unique_ptr<Graph> box_;  // draws the moving box on a background
  Picture boxGround_;
  std::string boxName_;
};

}  // namespace panel
