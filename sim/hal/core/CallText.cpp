#include "core/CallText.h"

#include <zlib.h>

#include <cstdio>

namespace sim {

std::string Crc32Text(const void* data, size_t size) {
  char text[9];
  const auto crc = crc32_z(0, static_cast<const Bytef*>(data), size);
  std::snprintf(text, sizeof(text), "%08lx", crc);
  return text;
}

void PutBuffer(CallText& out, const void* data, size_t size) {
  if (data == nullptr) {
    out.text << "NULL";
    return;
  }
  out.text << size << " bytes";
  // If the call failed, the buffer may be smaller than the rejected size.
  if (out.succeeded) out.text << " crc32=" << Crc32Text(data, size);
}

}  // namespace sim
