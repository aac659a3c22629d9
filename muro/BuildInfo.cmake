# What the program knows of its own build: the commit, the fingerprint of the HAL interface, and what
# it needs of the HAL.
set(interface "${PROJECT_SOURCE_DIR}/hal/interface")
set(generated "${CMAKE_CURRENT_BINARY_DIR}/generated")
if(CVN_HAL_LIBRARY)
  set(linked_hal "${CVN_HAL_LIBRARY}")
else()
  set(linked_hal "$<TARGET_FILE:cvn_k2vhal>")
endif()

# The commit changes with what git notes of it; whether files differ from it, with the harness.
find_package(Git QUIET)
set(noted "")
if(GIT_FOUND AND EXISTS "${PROJECT_SOURCE_DIR}/.git")
  execute_process(COMMAND "${GIT_EXECUTABLE}" rev-parse --git-path logs/HEAD
    WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}" OUTPUT_VARIABLE noted
    OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  cmake_path(ABSOLUTE_PATH noted BASE_DIRECTORY "${PROJECT_SOURCE_DIR}")
  if(NOT EXISTS "${noted}" OR IS_DIRECTORY "${noted}")
    set(noted "")
  endif()
endif()
set(commit "${generated}/Commit.cpp")
add_custom_command(OUTPUT "${commit}"
  COMMAND "${CMAKE_COMMAND}" -D "SOURCE=${PROJECT_SOURCE_DIR}" -D "GIT=${GIT_EXECUTABLE}"
    -D "OUTPUT=${commit}" -P "${PROJECT_SOURCE_DIR}/cmake/WriteCommit.cmake"
  DEPENDS muro "${PROJECT_SOURCE_DIR}/cmake/WriteCommit.cmake" ${noted}
  VERBATIM)

# The compiler as preprocessor, with all flags that it has when it compiles.
add_library(cvn_interface_text OBJECT "${interface}/Text.cpp")
target_include_directories(cvn_interface_text PRIVATE "${CVN_HAL_INCLUDE_DIR}")
target_compile_options(cvn_interface_text PRIVATE -E)
set(fingerprint "${generated}/Fingerprint.cpp")
add_custom_command(OUTPUT "${fingerprint}"
  COMMAND "${CMAKE_COMMAND}" -D "TEXT=$<TARGET_OBJECTS:cvn_interface_text>"
    -D "OUTPUT=${fingerprint}" -P "${interface}/WriteFingerprint.cmake"
  DEPENDS cvn_interface_text "$<TARGET_OBJECTS:cvn_interface_text>"
    "${interface}/WriteFingerprint.cmake"
  VERBATIM)

# Needed is what the harness's objects leave undefined. The program links a copy of them in which the
# HAL's functions are weak.
set(needed "${generated}/NeededSymbols.cpp")
set(description "${generated}/Description.cpp")
set(weak_harness "${CMAKE_CURRENT_BINARY_DIR}/weak/libmuro.a")
add_custom_command(OUTPUT "${needed}" "${description}" "${generated}/weak.txt"
  COMMAND "${CMAKE_COMMAND}" -D "NM=${CMAKE_NM}" -D "HARNESS=$<TARGET_FILE:muro>"
    -D "LIBRARY=${linked_hal}" -D "OUTPUT=${generated}" -P "${interface}/WriteNeeded.cmake"
  DEPENDS muro "${linked_hal}" "${interface}/WriteNeeded.cmake"
  VERBATIM)
add_custom_command(OUTPUT "${weak_harness}"
  COMMAND "${CMAKE_COMMAND}" -E make_directory "${CMAKE_CURRENT_BINARY_DIR}/weak"
  COMMAND "${CMAKE_OBJCOPY}" "--weaken-symbols=${generated}/weak.txt" "$<TARGET_FILE:muro>"
    "${weak_harness}"
  DEPENDS muro "${generated}/weak.txt"
  VERBATIM)
add_custom_target(cvn_weak_harness DEPENDS "${weak_harness}")

add_library(cvn_build_info STATIC "${commit}" "${fingerprint}" "${needed}")
target_include_directories(cvn_build_info PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
target_link_libraries(cvn_build_info PRIVATE cvn_warnings)

# The interface as the compiler laid it out, in a section of the program that no strip removes:
# cvnhalcheck compares HAL libraries with it.
add_library(cvn_hal_description MODULE "${description}")
target_include_directories(cvn_hal_description PRIVATE "${interface}")
target_link_libraries(cvn_hal_description PRIVATE cvn_hal_headers)
# Every type is described, whether something uses it or not.
set(whole_interface -g -fno-eliminate-unused-debug-types "-ffile-prefix-map=${PROJECT_BINARY_DIR}=."
  $<$<CXX_COMPILER_ID:Clang>:-fstandalone-debug> $<$<CXX_COMPILER_ID:GNU>:-femit-class-debug-always>)
target_compile_options(cvn_hal_description PRIVATE
  ${whole_interface} "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=." -O0 -fno-sanitize=all)
target_link_options(cvn_hal_description PRIVATE
  -nostdlib -fno-sanitize=all -Wl,--build-id=none -Wl,--compress-debug-sections=zlib)
set_target_properties(cvn_hal_description PROPERTIES
  LIBRARY_OUTPUT_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}")
set(described "${CMAKE_CURRENT_BINARY_DIR}/libcvn_hal_description.so")
set(embedded "${PROJECT_SOURCE_DIR}/hal/interface/Embedded.cpp")
set_source_files_properties("${embedded}" PROPERTIES
  COMPILE_DEFINITIONS CVN_HAL_DESCRIPTION="${described}" OBJECT_DEPENDS "${described}")
