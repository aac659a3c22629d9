# Builds the harness as for a board: against a copy of the HAL's headers and a HAL library, without
# the simulation. Fails where hal/include holds more than declarations, or where the harness needs
# more. The build stays for the next run.
#
#   cmake -D SOURCE=… -D BUILD=… -D GENERATOR=… -D CXX=… -D LAUNCHER=… -D NM=… -D HAL_LIBRARY=…
#         -P BoardBuild.cmake
set(headers "${SOURCE}/hal/include")
set(copy "${BUILD}/include")

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Headers alone. The copy keeps their times, so that only what changed is built again.
file(GLOB_RECURSE files RELATIVE "${headers}" "${headers}/*")
set(others ${files})
list(FILTER others EXCLUDE REGEX "\\.h$")
if(others)
  message(FATAL_ERROR "hal/include holds other files than headers: ${others}")
endif()
file(REMOVE_RECURSE "${copy}")
file(COPY "${headers}/" DESTINATION "${copy}" FILES_MATCHING PATTERN "*.h")

# Declarations alone: a file of all headers defines nothing, and none of them defines templates,
# inline functions or macros for others to use.
foreach(file IN LISTS files)
  file(STRINGS "${headers}/${file}" definitions
    REGEX "^[ \t]*(#[ \t]*define|inline|template|.*\\)[ \t]*(const)?[ \t]*{)")
  if(definitions)
    message(FATAL_ERROR "hal/include/${file} holds more than declarations: ${definitions}")
  endif()
endforeach()
list(TRANSFORM files PREPEND "#include \"" OUTPUT_VARIABLE lines)
list(TRANSFORM lines APPEND "\"\n")
file(WRITE "${BUILD}/all_headers.cpp" ${lines})
run("${CXX}" -std=c++20 -I "${copy}" -c "${BUILD}/all_headers.cpp" -o "${BUILD}/all_headers.o")
execute_process(COMMAND "${NM}" --defined-only "${BUILD}/all_headers.o"
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
if(symbols)
  message(FATAL_ERROR "hal/include defines: ${symbols}")
endif()

run("${CMAKE_COMMAND}" -S "${SOURCE}" -B "${BUILD}/build" -G "${GENERATOR}"
  -D CMAKE_CXX_COMPILER=${CXX} -D CMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}
  -D CMAKE_CXX_FLAGS=-O0 -D CVN_BUILD_SIM=OFF
  -D CVN_HAL_LIBRARY=${HAL_LIBRARY} -D CVN_HAL_INCLUDE_DIR=${copy})
run("${CMAKE_COMMAND}" --build "${BUILD}/build" --target cvntester --parallel 2)
cmake_path(GET HAL_LIBRARY PARENT_PATH hal_directory)
run("${CMAKE_COMMAND}" -E env "LD_LIBRARY_PATH=${hal_directory}"
  "${BUILD}/build/bin/cvntester" --list)
