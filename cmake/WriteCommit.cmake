# Writes the commit of the build. An unpacked source archive has no repository, but a commit.txt,
# which git fills in when it makes the archive.
#
#   cmake -D SOURCE=… -D GIT=… -D OUTPUT=FILE.cpp -P WriteCommit.cmake
cmake_minimum_required(VERSION 3.25)

set(commit "")
if(GIT AND EXISTS "${SOURCE}/.git")
  execute_process(COMMAND "${GIT}" -C "${SOURCE}" describe --always --dirty --abbrev=12 --exclude=*
    OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
if(NOT commit)
  file(STRINGS "${SOURCE}/cmake/commit.txt" commit LIMIT_COUNT 1)
  string(SUBSTRING "${commit}" 0 12 commit)
endif()
if(NOT commit MATCHES "^[0-9a-f]+(-dirty)?$")
  set(commit "unknown")
endif()
file(CONFIGURE OUTPUT "${OUTPUT}" @ONLY CONTENT
"// Written by WriteCommit.cmake.
#include \"runner/BuildInfo.h\"
const char runner::kCommit[] = \"@commit@\";
")
