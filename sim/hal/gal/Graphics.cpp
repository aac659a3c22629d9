#include <ostream>

#include "core/Areas.h"
#include "core/Call.h"
#include "k2v/gal.h"

namespace sim {
namespace {

int Initialize(Graphics& graphics) {
  if (graphics.initialized) return K2V_RHAL_ERR_ALREADY;
  graphics.initialized = true;
  return K2V_RHAL_OK;
}

int Enable(Graphics& graphics, uint32_t on) {
  if (on > 1) return K2V_RHAL_ERR_PARAM;
  if (!graphics.initialized) return K2V_RHAL_ERR_ORDER;
  graphics.on = on == 1;
  return K2V_RHAL_OK;
}

int Finish(Graphics& graphics) {
  if (!graphics.initialized) return K2V_RHAL_ERR_ORDER;
  graphics.initialized = false;
  return K2V_RHAL_OK;
}

template <auto layer>
int InitializeLayer(Board& board) {
  return Initialize(board.*layer);
}

template <auto layer>
int EnableLayer(Board& board, uint32_t on) {
  return Enable(board.*layer, on);
}

template <auto layer>
int FinishLayer(Board& board) {
  return Finish(board.*layer);
}

void Describe(const Board& board, std::ostream& out) {
  out << "graphics: " << (board.graphics.on ? "two planes" : "one plane") << ", panel on the link "
      << (board.linkedGraphics.on ? "on" : "off") << '\n';
}

}  // namespace

constinit const Area kGraphicsArea = {{}, Describe};

}  // namespace sim

using namespace sim;

int K2V_RHAL_GAL_Init() {
  return Call(__func__, InitializeLayer<&Board::graphics>);
}

int K2V_RHAL_GAL_OSDSPLIT(uint32_t enable) {
  return Call(__func__, EnableLayer<&Board::graphics>, enable);
}

int K2V_RHAL_GAL_Finalize() {
  return Call(__func__, FinishLayer<&Board::graphics>);
}

int K2V_RHAL_RLINK_GAL_Init() {
  return Call(__func__, InitializeLayer<&Board::linkedGraphics>);
}

int K2V_RHAL_RLINK_GAL_PANEL_ENABLE(uint32_t enable) {
  return Call(__func__, EnableLayer<&Board::linkedGraphics>, enable);
}

int K2V_RHAL_RLINK_GAL_Finalize() {
  return Call(__func__, FinishLayer<&Board::linkedGraphics>);
}
