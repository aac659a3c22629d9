#include "BuildIds.h"

#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <vector>

#include "Text.h"

namespace runner {
namespace {

constexpr std::string_view kHalLibraries = "libcvn_";
constexpr std::size_t kShownBytes = 6;

std::size_t RoundedUp(std::size_t size, std::size_t alignment) {
  return (size + alignment - 1) / alignment * alignment;
}

/// The first bytes of the build id in a note segment, in hexadecimal; empty if there is none.
std::string IdIn(std::string_view notes, std::size_t alignment) {
  ElfW(Nhdr) head = {};
  while (notes.size() >= sizeof head) {
    std::memcpy(&head, notes.data(), sizeof head);
    const std::size_t id = sizeof head + RoundedUp(head.n_namesz, alignment);
    const std::size_t end = id + RoundedUp(head.n_descsz, alignment);
    if (id + head.n_descsz > notes.size()) break;
    if (head.n_type == NT_GNU_BUILD_ID && notes.substr(sizeof head).starts_with(ELF_NOTE_GNU)) {
      std::string text;
      for (const char c : notes.substr(id, std::min<std::size_t>(head.n_descsz, kShownBytes))) {
        char hex[3];
        std::snprintf(hex, sizeof hex, "%02x", static_cast<unsigned char>(c));
        text += hex;
      }
      return text;
    }
    notes.remove_prefix(std::min(end, notes.size()));
  }
  return "";
}

std::string IdOf(const dl_phdr_info& object) {
  std::string id;
  for (int i = 0; i < object.dlpi_phnum && id.empty(); ++i) {
    const ElfW(Phdr)& segment = object.dlpi_phdr[i];
    if (segment.p_type != PT_NOTE) continue;
    const auto* notes = reinterpret_cast<const char*>(object.dlpi_addr + segment.p_vaddr);
    id = IdIn({notes, segment.p_memsz}, std::max<std::size_t>(segment.p_align, 4));
  }
  return id;
}

int Note(dl_phdr_info* object, std::size_t, void* names) {
  std::string_view name = object->dlpi_name == nullptr ? "" : object->dlpi_name;
  name.remove_prefix(name.rfind('/') + 1);  // npos + 1 is 0
  auto& all = *static_cast<std::vector<std::string>*>(names);
  if (!all.empty() && !name.starts_with(kHalLibraries)) return 0;
  const std::string id = IdOf(*object);
  // The program itself comes first.
  all.push_back(CleanLine(all.empty() ? "cvntester" : name) + (id.empty() ? "" : " " + id));
  return 0;
}

}  // namespace

std::string BuildIds() {
  std::vector<std::string> names;
  dl_iterate_phdr(Note, &names);
  return Joined(names, ", ");
}

}  // namespace runner
