#include "Remarks.h"

namespace {

void (*remarkListener)(const std::string& text) = nullptr;
void (*findingListener)(const std::string& json) = nullptr;
void (*attachmentListener)(const std::string& name, const std::string& content) = nullptr;

}  // namespace

void Remark(const std::string& text) {
  if (remarkListener != nullptr) remarkListener(text);
}

void SetRemarkListener(void (*listener)(const std::string& text)) {
  remarkListener = listener;
}

void Finding(const std::string& json) {
  if (findingListener != nullptr) findingListener(json);
}

bool IsFindingHeard() {
  return findingListener != nullptr;
}

void SetFindingListener(void (*listener)(const std::string& json)) {
  findingListener = listener;
}

void Attach(const std::string& name, const std::string& content) {
  if (attachmentListener != nullptr) attachmentListener(name, content);
}

void SetAttachmentListener(void (*listener)(const std::string& name, const std::string& content)) {
  attachmentListener = listener;
}
