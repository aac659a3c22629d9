# Writes the fingerprint of the HAL interface: a digest of the declarations in the HAL's headers,
# without comments, formatting, file names and what comes from the system's headers.
#
#   cmake -D TEXT=PREPROCESSED -D OUTPUT=FILE.cpp -P WriteFingerprint.cmake
cmake_minimum_required(VERSION 3.25)

file(READ "${TEXT}" text)
# Assertions declare nothing, and the macros in them belong to the compiler.
string(REGEX REPLACE "static_assert\\([^;]*;" "" text "${text}")
# What would be taken for the syntax of lists.
string(REPLACE ";" "@semicolon@" text "${text}")
string(REPLACE "[" "@open@" text "${text}")
string(REPLACE "]" "@close@" text "${text}")
string(REGEX MATCHALL "[^\n]+" lines "${text}")
set(declarations "")
set(own TRUE)
foreach(line IN LISTS lines)
  if(line MATCHES "^# [0-9]+ \"[^\"]*\"(.*)$")
    # The flag 3 of a line marker says that what follows is of a system header.
    string(FIND "${CMAKE_MATCH_1}" " 3" flag)
    if(flag EQUAL -1)
      set(own TRUE)
    else()
      set(own FALSE)
    endif()
  elseif(own AND NOT line MATCHES "^#")
    string(APPEND declarations "${line} ")
  endif()
endforeach()
string(REGEX REPLACE "[ \t]+" " " declarations "${declarations}")
string(REGEX REPLACE " ?([^A-Za-z0-9_@ ]|@[a-z]+@) ?" "\\1" declarations "${declarations}")
string(STRIP "${declarations}" declarations)
# Headers of the board that lie in a system directory cannot be distinguished from the C library's.
set(digest "unknown")
if(declarations MATCHES "K2V_")
  string(SHA256 digest "${declarations}")
  string(SUBSTRING "${digest}" 0 12 digest)
endif()
file(CONFIGURE OUTPUT "${OUTPUT}" @ONLY CONTENT
"// Written by WriteFingerprint.cmake.
#include \"runner/BuildInfo.h\"
const char runner::kHalFingerprint[] = \"${digest}\";
")
