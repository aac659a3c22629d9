#include <ostream>

#include "core/Areas.h"
#include "core/Call.h"
#include "k2v/vbe.h"

namespace sim {
namespace {

constexpr uint32_t kMaxMode = 3;
constexpr uint8_t kMaxDepth = 10;
constexpr int kMaxConvergence = 10;

int Initialize(Board& board) {
  board.formatter.initialized = true;
  return K2V_RHAL_OK;
}

int Open(Board& board) {
  if (!board.formatter.initialized) return K2V_RHAL_ERR_ORDER;
  board.formatter.open = true;
  return K2V_RHAL_OK;
}

int Check(const Board& board, bool argumentsAreRight) {
  if (!argumentsAreRight) return K2V_RHAL_ERR_PARAM;
  return board.formatter.open ? K2V_RHAL_OK : K2V_RHAL_ERR_ORDER;
}

int SelectFormat(Board& board, uint32_t format) {
  if (const int error = Check(board, format <= VBE_INPUT_TYPE_2DTO3D)) return error;
  board.formatter.format = static_cast<uint8_t>(format);
  return K2V_RHAL_OK;
}

int SetDepth(Board& board, uint32_t mode, uint8_t level) {
  if (const int error = Check(board, mode <= kMaxMode && level <= kMaxDepth)) return error;
  board.formatter.mode = static_cast<uint8_t>(mode);
  board.formatter.depth = level;
  return K2V_RHAL_OK;
}

int SetConvergence(Board& board, int8_t value) {
  if (const int error = Check(board, value >= -kMaxConvergence && value <= kMaxConvergence)) {
    return error;
  }
  board.formatter.convergence = value;
  return K2V_RHAL_OK;
}

template <bool Formatter3d::*flag>
int SetFlag(Board& board, uint32_t on) {
  if (const int error = Check(board, on <= 1)) return error;
  board.formatter.*flag = on == 1;
  return K2V_RHAL_OK;
}

void Describe(const Board& board, std::ostream& out) {
  static constexpr const char* kFormats[] = {"off",          "top and bottom",     "side by side",
                                             "checkerboard", "frame sequential",   "columns",
                                             "lines, half",  "frame packing",      "fields",
                                             "lines",        "side by side, full", "dual stream",
                                             "2D to 3D"};
  const Formatter3d& formatter = board.formatter;
  out << "3d formatter: " << (formatter.open ? "open, " : "closed, ") << kFormats[formatter.format]
      << ", depth " << +formatter.depth << ", view point " << +formatter.convergence << '\n';
}

}  // namespace

constinit const Area kFormatter3dArea = {{}, Describe};

}  // namespace sim

using namespace sim;

int K2V_RHAL_VBE_TRIDFMT_Initialize() {
  return Call(__func__, Initialize);
}

int K2V_RHAL_VBE_TRIDFMT_Open() {
  return Call(__func__, Open);
}

int K2V_RHAL_VBE_TRIDFMT_SelectInputFormat(uint32_t format) {
  return Call(__func__, SelectFormat, format);
}

int K2V_RHAL_VBE_TRIDFMT_CtrlDepth(uint32_t mode, uint8_t level) {
  return Call(__func__, SetDepth, mode, level);
}

int K2V_RHAL_VBE_TRIDFMT_SetConvValue(int8_t value) {
  return Call(__func__, SetConvergence, value);
}

int K2V_RHAL_VBE_TRIDFMT_ToggleOutputLRFrame(uint32_t order) {
  return Call(__func__, SetFlag<&Formatter3d::leftFirstOut>, order);
}

int K2V_RHAL_VBE_TRIDFMT_ToggleInputLRFrame(uint32_t order) {
  return Call(__func__, SetFlag<&Formatter3d::rightFirstIn>, order);
}

int K2V_RHAL_VBE_TRIDFMT_AutoConvergenceEnable(uint32_t enable) {
  return Call(__func__, SetFlag<&Formatter3d::autoConvergence>, enable);
}
