# 32-bit ARM (version 7) with hardware floating point.
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CVN_TARGET arm-linux-gnueabihf)
cmake_path(SET CVN_TARGET_ROOT NORMALIZE "${CMAKE_CURRENT_LIST_DIR}/../build/root/armhf")
set(CVN_EMULATOR qemu-arm)
include("${CMAKE_CURRENT_LIST_DIR}/toolchain-debian.cmake")
