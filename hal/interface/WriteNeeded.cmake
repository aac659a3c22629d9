# Writes what the harness needs of the HAL: the names to check (NeededSymbols.cpp), the names that the
# program's link makes weak (weak.txt) and declarations by which the compiler describes the interface
# in its debugging information (Description.cpp).
#
#   cmake -D NM=… -D HARNESS=libmuro.a -D LIBRARY=libcvn_k2vhal.so -D OUTPUT=DIRECTORY -P WriteNeeded.cmake
cmake_minimum_required(VERSION 3.25)

# symbols(RESULT OPTION...): names from nm, without their versions.
function(symbols result)
  execute_process(COMMAND "${NM}" -P ${ARGN} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "[^\n]+" lines "${text}")
  list(TRANSFORM lines REPLACE "[ @].*" "")
  list(REMOVE_DUPLICATES lines)
  set(${result} "${lines}" PARENT_SCOPE)
endfunction()

# The HAL's functions begin with K2V_ or are the link's (RLink).
symbols(needed --undefined-only "${HARNESS}")
list(FILTER needed INCLUDE REGEX "^(K2V_|_ZN5RLink)")
list(SORT needed)
if(NOT needed)
  message(FATAL_ERROR "${HARNESS} calls no function of the HAL")
endif()

# What the library lacks stays strong, so that the linker reports it.
symbols(weak --dynamic --defined-only "${LIBRARY}")
list(FILTER weak INCLUDE REGEX "^(K2V_|_ZN5RLink)")
set(lacking ${needed})
if(weak)
  list(REMOVE_ITEM lacking ${weak})
endif()
set(weak ${needed})
if(lacking)
  list(REMOVE_ITEM weak ${lacking})
endif()

# Files that would not change keep their time, and what is made of them is not made again.
list(JOIN weak "\n" text)
file(CONFIGURE OUTPUT "${OUTPUT}/weak.txt" CONTENT "${text}\n" @ONLY)

list(TRANSFORM needed REPLACE "(.+)" "    \"\\1\",\n" OUTPUT_VARIABLE names)
string(JOIN "" names ${names})
file(CONFIGURE OUTPUT "${OUTPUT}/NeededSymbols.cpp" @ONLY CONTENT
"// Written by WriteNeeded.cmake.
#include \"runner/HalCheck.h\"
const char* const runner::kNeededHalSymbols[] = {
${names}    nullptr};
")

# A pointer to each function: neither compiler describes functions that are only declared.
set(functions ${needed})
list(FILTER functions INCLUDE REGEX "^K2V_")
list(TRANSFORM functions REPLACE "(.+)" "[[gnu::used]] decltype(&\\1) cvn_\\1 = nullptr")
list(JOIN functions ";\n" functions)
file(CONFIGURE OUTPUT "${OUTPUT}/Description.cpp" @ONLY CONTENT
"// Written by WriteNeeded.cmake.
#include \"Headers.h\"
[[gnu::used]] RLink* cvn_RLink = nullptr;
${functions};
")
