# The contents of the packages, and how CPack makes them; scripts/package.sh builds and runs it.
# Without --component, `cmake --install` installs the program and none of this.
set(board lib/cvntester-sim)
set(tools lib/cvntester-tools)
set(interpreted "${CMAKE_BINARY_DIR}/share/packages")

# take(COMPONENT DIRECTORY TARGET...): adds those programs and libraries that exist in this build.
function(take component directory)
  foreach(target IN LISTS ARGN)
    if(TARGET ${target})
      install(TARGETS ${target}
        RUNTIME DESTINATION ${directory}/bin COMPONENT ${component} EXCLUDE_FROM_ALL
        LIBRARY DESTINATION ${directory}/lib COMPONENT ${component} EXCLUDE_FROM_ALL)
    endif()
  endforeach()
endfunction()

# link(COMPONENT TARGET PATH): adds a symbolic link.
function(link component target path)
  get_filename_component(directory "${path}" DIRECTORY)
  install(CODE "
    set(prefix \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\")
    file(MAKE_DIRECTORY \"\${prefix}/${directory}\")
    file(CREATE_LINK \"${target}\" \"\${prefix}/${path}\" SYMBOLIC)"
    COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()

# The simulated board, laid out like a checkout with its build tree. The sandbox consists of the
# machine's own programs, so only builds for this machine include it; others have only what the
# harness loads.
if(CVN_BUILD_SIM)
  take(cvntester-sim ${board} cvntester cvn_k2vhal cvnsim cvndumpgen gst-cvn-test)
  link(cvntester-sim ../${board}/bin/cvnsim bin/cvnsim)
  if(NOT CMAKE_CROSSCOMPILING)
    take(cvntester-sim ${board} cvnsim_time cvnworld cvnpanel)
    install(DIRECTORY "${CMAKE_BINARY_DIR}/media" DESTINATION ${board}
      COMPONENT cvntester-sim EXCLUDE_FROM_ALL USE_SOURCE_PERMISSIONS PATTERN "*stamp" EXCLUDE)
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/sim/board" DESTINATION ${board}/sim
      COMPONENT cvntester-sim EXCLUDE_FROM_ALL USE_SOURCE_PERMISSIONS
      PATTERN "time" EXCLUDE PATTERN "CMakeLists.txt" EXCLUDE)
    install(FILES "${PROJECT_SOURCE_DIR}/scripts/common.sh" DESTINATION ${board}/scripts
      COMPONENT cvntester-sim EXCLUDE_FROM_ALL)
    install(PROGRAMS "${PROJECT_SOURCE_DIR}/packaging/cvnboard" DESTINATION bin
      COMPONENT cvntester-sim EXCLUDE_FROM_ALL)
    if(TARGET board_eyes)
      install(DIRECTORY "${CMAKE_BINARY_DIR}/eyes" DESTINATION ${board}
        COMPONENT cvntester-sim EXCLUDE_FROM_ALL USE_SOURCE_PERMISSIONS)
      take(cvntester-sim ${board} cvneyes)
    endif()
  endif()
endif()

# The PC programs. Recorder and replay are loaded by name from their directory.
take(cvntester-tools ${tools} cvneyes cvntrace cvnrecord)
foreach(program IN ITEMS cvneyes cvntrace)
  if(TARGET ${program})
    link(cvntester-tools ../${tools}/bin/${program} bin/${program})
  endif()
endforeach()
if(TARGET cvnreplay)
  install(TARGETS cvnreplay LIBRARY DESTINATION ${tools}/lib/replay
    COMPONENT cvntester-tools EXCLUDE_FROM_ALL)
endif()
foreach(program IN ITEMS report halcheck)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/tools/${program}" DESTINATION ${tools}
    COMPONENT cvntester-tools EXCLUDE_FROM_ALL USE_SOURCE_PERMISSIONS
    PATTERN "__pycache__" EXCLUDE)
  link(cvntester-tools ../${tools}/${program}/cvn${program} bin/cvn${program})
endforeach()
install(DIRECTORY "${PROJECT_SOURCE_DIR}/tools/python" DESTINATION ${tools}
  COMPONENT cvntester-tools EXCLUDE_FROM_ALL PATTERN "__pycache__" EXCLUDE)

foreach(package IN ITEMS cvntester-sim cvntester-tools)
  install(DIRECTORY "${CMAKE_BINARY_DIR}/share/${package}/" DESTINATION share
    COMPONENT ${package} EXCLUDE_FROM_ALL OPTIONAL)
endforeach()

set(CPACK_PACKAGE_NAME cvntester)
set(CPACK_PACKAGE_CONTACT "cvntester developers <cvntester@lists.debian.invalid>")
set(CPACK_STRIP_FILES ON)
set(CPACK_THREADS 1)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/packaging/Documents.cmake")
set(CPACK_CVN_SOURCE "${PROJECT_SOURCE_DIR}")
set(CPACK_COMPONENTS_ALL cvntester cvntester-sim cvntester-tools)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${component})
endforeach()
set(CPACK_DEBIAN_CVNTESTER_PACKAGE_SUGGESTS "cvntester-sim, cvntester-tools")
set(CPACK_DEBIAN_CVNTESTER-SIM_PACKAGE_SUGGESTS "cvntester-tools")
set(CPACK_COMPONENT_CVNTESTER_DESCRIPTION "test harness for the HAL of television systems-on-chip
A menu-driven console harness for the hardware abstraction layer of a
television, for an operator or for unattended runs. It needs the board's HAL
library, libcvn_k2vhal.so, where the loader finds it.")
set(CPACK_COMPONENT_CVNTESTER-SIM_DESCRIPTION "simulated television board for cvntester
A HAL library that behaves as a board, and where it is built for the same
machine a sandbox with the board's files, its player and its media, started by
cvnboard.")
set(CPACK_COMPONENT_CVNTESTER-TOOLS_DESCRIPTION "programs for the PC beside cvntester
Reports of runs (cvnreport), looks at the panel (cvneyes), recordings of HAL
calls (cvntrace) and a check whether a HAL library fits (cvnhalcheck).")

# dpkg-shlibdeps finds the required libraries, but only among packages of this machine's
# architecture. Other architectures have the same versions of the same libraries.
set(CPACK_DEBIAN_CVNTESTER-TOOLS_PACKAGE_DEPENDS
  "python3, python3-jinja2, python3-pil, python3-pyelftools, binutils")
if(CMAKE_CROSSCOMPILING)
  set(runtime "libgcc-s1 (>= 4.3), libstdc++6 (>= 12)")
  set(CPACK_DEBIAN_CVNTESTER_PACKAGE_DEPENDS "libc6 (>= 2.34), ${runtime}")
  string(JOIN ", " CPACK_DEBIAN_CVNTESTER-SIM_PACKAGE_DEPENDS "libc6 (>= 2.36)" "${runtime}"
    libssl3 zlib1g libavcodec59 libavformat59 libavutil57 libswresample4)
  set(architectures "aarch64=arm64" "armv7l=armhf")
  list(FILTER architectures INCLUDE REGEX "^${CMAKE_SYSTEM_PROCESSOR}=")
  string(REGEX REPLACE ".*=" "" CPACK_DEBIAN_PACKAGE_ARCHITECTURE "${architectures}")
  string(APPEND CPACK_DEBIAN_CVNTESTER-TOOLS_PACKAGE_DEPENDS ", libc6 (>= 2.36), ${runtime}")
else()
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
  set(CPACK_DEBIAN_CVNTESTER-SIM_PACKAGE_DEPENDS "bubblewrap, busybox-static, openssl, ffmpeg, fonts-dejavu-core")
endif()
include(CPack)
