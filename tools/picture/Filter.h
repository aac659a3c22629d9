// Filter graphs of libavfilter that make pictures or turn pictures into one.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavutil/frame.h>
}

namespace picture {

/// A pointer that is freed by one of the library's functions, which take its address.
template <typename T, void (*Free)(T**)>
struct Deleter {
  void operator()(T* pointer) const { Free(&pointer); }
};

using Picture = std::unique_ptr<AVFrame, Deleter<AVFrame, av_frame_free>>;

/// Throws std::runtime_error with `what` and the library's text of `error`.
[[noreturn]] void Fail(const std::string& what, int error);

/// Fails where the library answered an error.
inline int Check(const std::string& what, int answer) {
  if (answer < 0) Fail(what, answer);
  return answer;
}

/// Text as printf makes it.
[[gnu::format(printf, 1, 2)]] std::string Printed(const char* format, ...);

/// A graph whose inputs are called [in0], [in1] and so on, and whose output is planar RGB. It runs
/// on one thread.
class Graph {
 public:
  /// `like` are pictures of the sizes and formats that will come. `ticksPerSecond` is the unit of
  /// the pictures' time. Throws std::runtime_error on a wrong text.
  Graph(const std::string& text, std::span<const AVFrame* const> like, double ticksPerSecond = 60);

  /// The graph's picture of the given ones, all of time `pts`. Throws std::runtime_error.
  Picture Run(std::span<const AVFrame* const> inputs, int64_t pts);

  /// Tells whether pictures have the sizes and formats that the graph was made for.
  bool Fits(std::span<const AVFrame* const> inputs) const;

 private:
  struct Shape {
    int width, height, format;
    bool operator==(const Shape&) const = default;
  };
  static Shape ShapeOf(const AVFrame& picture);
  void AddInput(const AVFrame& like, double ticksPerSecond);
  void AddSink();
  void Connect(const std::string& text);

  std::unique_ptr<AVFilterGraph, Deleter<AVFilterGraph, avfilter_graph_free>> graph_;
  std::vector<AVFilterContext*> inputs_;
  std::vector<Shape> shapes_;
  AVFilterContext* sink_ = nullptr;
};

/// One picture of a graph without inputs, such as "color=red:s=8x8".
Picture Generate(const std::string& text);

/// Turns one picture into another.
Picture Filtered(const AVFrame& picture, const std::string& text);

}  // namespace picture
