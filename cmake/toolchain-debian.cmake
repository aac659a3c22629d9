# Shared by the ARM toolchains: Debian's cross compilers and, for builds with the simulated board, a
# directory with the libraries that the simulation needs, which `./test.sh --arch` fills. The
# including file sets CVN_TARGET (GNU triplet), CVN_TARGET_ROOT (that directory) and CVN_EMULATOR.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER "${CVN_TARGET}-gcc")
set(CMAKE_CXX_COMPILER "${CVN_TARGET}-g++")

set(CMAKE_FIND_ROOT_PATH "${CVN_TARGET_ROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} "${CVN_TARGET_ROOT}/usr/lib/${CVN_TARGET}/pkgconfig")
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${CVN_TARGET_ROOT}")

# Headers that differ between architectures, and the dependencies of libraries.
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES "${CVN_TARGET_ROOT}/usr/include/${CVN_TARGET}")
foreach(kind IN ITEMS EXE SHARED)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-Wl,-rpath-link,${CVN_TARGET_ROOT}/usr/lib/${CVN_TARGET}")
endforeach()

set(CMAKE_CROSSCOMPILING_EMULATOR "${CVN_EMULATOR};-L;${CVN_TARGET_ROOT}")
