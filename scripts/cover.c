/* Records which places of a program a test runs; called by code built with
 * -fsanitize-coverage=trace-pc.
 *
 * CVN_COVER names a file; each place is written to it once per process, as a line "MODULE+OFFSET".
 * The file is opened for each line, because tests close descriptors, fork, and end in many ways. */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <link.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#define PLACES (1U << 20)
#define MODULES 64

struct Module {
  uintptr_t begin, end, base;
  char path[512];
};

static struct Module modules[MODULES];
static int moduleCount;
static uintptr_t places[PLACES]; /* a hash table */
static const char* path;

static int Note(struct dl_phdr_info* info, size_t size, void* data) {
  (void)size;
  (void)data;
  if (moduleCount == MODULES) return 1;
  struct Module* module = &modules[moduleCount];
  if (*info->dlpi_name == '\0') {
    const ssize_t length = readlink("/proc/self/exe", module->path, sizeof module->path - 1);
    module->path[length < 0 ? 0 : length] = '\0';
  } else {
    snprintf(module->path, sizeof module->path, "%s", info->dlpi_name);
  }
  module->base = info->dlpi_addr;
  for (int i = 0; i < info->dlpi_phnum; ++i) {
    const ElfW(Phdr)* segment = &info->dlpi_phdr[i];
    if (segment->p_type != PT_LOAD || (segment->p_flags & PF_X) == 0) continue;
    module->begin = module->base + segment->p_vaddr;
    module->end = module->begin + segment->p_memsz;
  }
  ++moduleCount;
  return 0;
}

__attribute__((constructor(101))) static void Begin(void) {
  path = getenv("CVN_COVER");
  if (path != NULL) path = strdup(path); /* tests change their environment */
  if (path != NULL) dl_iterate_phdr(Note, NULL);
}

static void Write(uintptr_t place) {
  for (int i = 0; i < moduleCount; ++i) {
    const struct Module* module = &modules[i];
    if (place < module->begin || place >= module->end) continue;
    char line[600];
    const int length =
        snprintf(line, sizeof line, "%s+%lx\n", module->path, (unsigned long)(place - module->base));
    const int fd = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) return;
    const ssize_t written = write(fd, line, (size_t)length);
    (void)written;
    close(fd);
    return;
  }
}

/* Every program and library has its own copy. */
__attribute__((visibility("hidden"))) void __sanitizer_cov_trace_pc(void) {
  if (path == NULL) return;
  /* The call itself: the instruction after it may belong to another line. */
  const uintptr_t place = (uintptr_t)__builtin_return_address(0) - 1;
  uint32_t slot = (uint32_t)(place * 0x9e3779b97f4a7c15ULL >> 44);
  for (int tries = 0; tries < 64; ++tries, slot = (slot + 1) & (PLACES - 1)) {
    if (places[slot] == place) return;
    if (places[slot] != 0) continue;
    const int before = errno;
    places[slot] = place;
    Write(place);
    errno = before;
    return;
  }
}
