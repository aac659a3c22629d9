#include "Remarks.h"

namespace {

void (*remarkListener)(const std::string& text) = nullptr;

}  // namespace

void Remark(const std::string& text) {
  if (remarkListener != nullptr) remarkListener(text);
}

void SetRemarkListener(void (*listener)(const std::string& text)) {
  remarkListener = listener;
}
