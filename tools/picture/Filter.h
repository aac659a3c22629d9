// Filter graphs of libavfilter that generate pictures or combine pictures into one.
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

/// Frees a pointer with a function of the library that takes the pointer's address.
template <typename T, void (*Free)(T**)>
struct Deleter {
  void operator()(T* pointer) const { Free(&pointer); }
};

using Picture = std::unique_ptr<AVFrame, Deleter<AVFrame, av_frame_free>>;

/// Throws std::runtime_error with `what` and the library's text of `error`.
[[noreturn]] void Fail(const std::string& what, int error);

/// Calls Fail if the library returned an error.
inline int Check(const std::string& what, int answer) {
  if (answer < 0) Fail(what, answer);
  return answer;
}

/// Text formatted as by printf.
[[gnu::format(printf, 1, 2)]] std::string Printed(const char* format, ...);

/// A graph whose inputs are called [in0], [in1] and so on, and whose output is planar RGB. It is
/// single-threaded.
class Graph {
 public:
  /// `like` has pictures of the sizes and formats of the later inputs. `ticksPerSecond` is the unit
  /// of the pictures' time. Throws std::runtime_error if the text is invalid.
  Graph(const std::string& text, std::span<const AVFrame* const> like, double ticksPerSecond = 60);

  /// The output for the given inputs, all at time `pts`. Throws std::runtime_error.
  Picture Run(std::span<const AVFrame* const> inputs, int64_t pts);

  /// Whether pictures have the sizes and formats for which the graph was made.
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

/// The picture of a graph without inputs, such as "color=red:s=8x8".
Picture Generate(const std::string& text);

/// Turns one picture into another.
Picture Filtered(const AVFrame& picture, const std::string& text);

}  // namespace picture
