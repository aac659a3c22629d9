# Man pages and completions of all programs except the harness, which makes its own
# (muro/CMakeLists.txt): pages of section 1 from --help, those of file formats (section 5) from the
# guides. Needs help2man and lowdown; builds without them have no such pages.
find_program(CVN_HELP2MAN help2man)
find_program(CVN_LOWDOWN lowdown)
set(documents "${CMAKE_BINARY_DIR}/share")
set(pages)

# man_page(PACKAGE PROGRAM HELP SUMMARY): HELP is the option that prints the help.
function(man_page package program help summary)
  if(NOT TARGET ${program})
    return()
  endif()
  runnable(command ${program})
  set(page "${documents}/${package}/man/man1/${program}.1")
  set(completion "${documents}/${package}/bash-completion/completions/${program}")
  add_custom_command(OUTPUT "${page}" "${completion}"
    COMMAND ${CMAKE_COMMAND} -E make_directory "${documents}/${package}/man/man1"
      "${documents}/${package}/bash-completion/completions"
    COMMAND ${CVN_HELP2MAN} --no-info --section=1 --help-option=${help} --version-string=${PROJECT_VERSION}
      "--name=${summary}" "--output=${page}" "${command}"
    COMMAND sed "s/@PROGRAM@/${program}/g; s/@HELP@/${help}/g"
      "${PROJECT_SOURCE_DIR}/packaging/completion.in" > "${completion}"
    DEPENDS ${program} "${PROJECT_SOURCE_DIR}/packaging/completion.in" VERBATIM)
  set(pages ${pages} "${page}" PARENT_SCOPE)
endfunction()

# format_page(PACKAGE NAME GUIDE SECTION SUMMARY): a section of a guide, up to the next section of
# the same level.
function(format_page package name guide section summary)
  set(page "${documents}/${package}/man/man5/${name}.5")
  string(JOIN " | " extract "sed -n '/^## ${section}$/,/^## /p' '${PROJECT_SOURCE_DIR}/${guide}'"
    "sed -e '/^## /d' -e '/^<!-- /d'")
  add_custom_command(OUTPUT "${page}"
    COMMAND ${CMAKE_COMMAND} -E make_directory "${documents}/${package}/man/man5"
    COMMAND sh -c "{ printf '# NAME\\n\\n${name} - ${summary}\\n\\n# DESCRIPTION\\n\\n'; ${extract}; } | '${CVN_LOWDOWN}' -s -tman -M title=${name} -M section=5 > '${page}'"
    DEPENDS "${PROJECT_SOURCE_DIR}/${guide}" VERBATIM)
  set(pages ${pages} "${page}" PARENT_SCOPE)
endfunction()

if(CVN_HELP2MAN AND CVN_LOWDOWN)
  man_page(cvntester-sim cvnsim help "inspect and change a simulated board")
  man_page(cvntester-sim cvndumpgen --help "write golden files and dumps of a playback test case")
  man_page(cvntester-tools cvneyes --help "judge pictures of a panel")
  man_page(cvntester-tools cvntrace --help "print and compare recordings of HAL calls")
  format_page(cvntester-sim cvnsim-scenario sim/README.md "Scenario files"
    "initial state and events of a simulated board")
  format_page(. cvntester-answers docs/UNATTENDED.md Answers "answers of unattended runs to prompts")
  add_custom_target(documents ALL DEPENDS ${pages})
else()
  message(STATUS "No man pages of tools: help2man or lowdown is missing")
endif()
