# 64-bit ARM.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CVN_TARGET aarch64-linux-gnu)
cmake_path(SET CVN_TARGET_ROOT NORMALIZE "${CMAKE_CURRENT_LIST_DIR}/../build/root/aarch64")
set(CVN_EMULATOR qemu-aarch64)
include("${CMAKE_CURRENT_LIST_DIR}/toolchain-debian.cmake")
