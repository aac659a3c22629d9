# Builds the harness as for a board, using the example in contrib/cmake: with copies of the HAL's headers under other
# names, and a HAL library, without the simulation. Fails if hal/include contains more than declarations, or if the
# harness needs more. The build tree is kept for the next run.
#
#   cmake -D SOURCE=… -D BUILD=… -D GENERATOR=… -D CXX=… -D LAUNCHER=… -D NM=… -D HAL_LIBRARY=… -D DESCRIPTION=…
#         -P BoardBuild.cmake
set(headers "${SOURCE}/hal/include")
set(copy "${BUILD}/include")

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Only headers. The copies keep their time stamps, so that only changed files are rebuilt.
file(GLOB_RECURSE files RELATIVE "${headers}" "${headers}/*")
set(others ${files})
list(FILTER others EXCLUDE REGEX "\\.h$")
if(others)
  message(FATAL_ERROR "hal/include holds other files than headers: ${others}")
endif()
file(REMOVE_RECURSE "${copy}")
file(COPY "${headers}/" DESTINATION "${copy}" FILES_MATCHING PATTERN "*.h")

# Only declarations: a file that includes all headers defines nothing, and no header defines templates, inline functions
# or macros for others to use.
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

# The headers as a board's SDK may provide them: contrib/cmake renames all files and some types.
file(REMOVE_RECURSE "${BUILD}/sdk.new")
file(STRINGS "${SOURCE}/contrib/cmake/headers.txt" rows REGEX "^[^# ]")
string(REGEX MATCHALL "[A-Z][A-Za-z0-9_]+=[A-Za-z0-9_]+" types "${rows}")
foreach(row IN LISTS rows)
  string(REGEX MATCH "^([^ ]+) +([^ ]+)" names "${row}")
  list(APPEND ours "${CMAKE_MATCH_1}")
  list(APPEND theirs "${CMAKE_MATCH_2}")
endforeach()
foreach(our their IN ZIP_LISTS ours theirs)
  file(READ "${copy}/${our}" text)
  foreach(old new IN ZIP_LISTS ours theirs)
    string(REPLACE "#include \"${old}\"" "#include \"${new}\"" text "${text}")
  endforeach()
  foreach(type IN LISTS types)
    string(REPLACE "=" ";" type "${type}")
    list(GET type 0 old)
    list(GET type 1 new)
    string(REPLACE "${old}" "${new}" text "${text}")
  endforeach()
  file(WRITE "${BUILD}/sdk.new/${their}" "${text}")
  get_filename_component(directory "${BUILD}/sdk/${their}" DIRECTORY)
  file(MAKE_DIRECTORY "${directory}")
  file(COPY_FILE "${BUILD}/sdk.new/${their}" "${BUILD}/sdk/${their}" ONLY_IF_DIFFERENT)
endforeach()
file(REMOVE_RECURSE "${copy}" "${BUILD}/sdk.new")

run("${CMAKE_COMMAND}" --fresh -S "${SOURCE}/contrib/cmake" -B "${BUILD}/build" -G "${GENERATOR}"
  -D CMAKE_CXX_COMPILER=${CXX} -D CMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}
  -D CMAKE_CXX_FLAGS=-O0 -D SDK_HAL_LIBRARY=${HAL_LIBRARY} -D SDK_INCLUDE_DIR=${BUILD}/sdk)
set(ENV{CMAKE_BUILD_PARALLEL_LEVEL} 2)
run("${CMAKE_COMMAND}" --build "${BUILD}/build")
cmake_path(GET HAL_LIBRARY PARENT_PATH hal_directory)
set(program "${BUILD}/build/installed/bin/cvntester")
foreach(arguments IN ITEMS --list --check-hal)
  run("${CMAKE_COMMAND}" -E env "LD_LIBRARY_PATH=${hal_directory}" "${program}" ${arguments})
endforeach()
# Renamed files and types make no difference to the compiled program.
run("${SOURCE}/tools/halcheck/cvnhalcheck" --verbose --debug-file "${DESCRIPTION}" "${HAL_LIBRARY}" "${program}")
