# runnable(RESULT TARGET): the path with which tests and recipes start one of our programs. A
# program for another architecture is started through the emulator by a small script.
function(runnable result target)
  if(NOT CMAKE_CROSSCOMPILING)
    set(${result} "$<TARGET_FILE:${target}>" PARENT_SCOPE)
    return()
  endif()
  string(JOIN " " emulator ${CMAKE_CROSSCOMPILING_EMULATOR})
  set(script "${PROJECT_BINARY_DIR}/emulated/${target}")
  file(GENERATE OUTPUT "${script}"
    CONTENT "#!/bin/sh\nexec ${emulator} $<TARGET_FILE:${target}> \"$@\"\n"
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
  set(${result} "${script}" PARENT_SCOPE)
endfunction()
