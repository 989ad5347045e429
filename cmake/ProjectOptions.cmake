# Compiler settings of our own code, as one interface target that every target of ours links privately.
#
# Results are bit-exact by contract, so contraction into fused multiply-add is off, and no target may use fast-math.
# Nothing may be built for a particular processor: Eigen's alignment must match the packaged Point Cloud Library.
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Kind of build" FORCE)
endif()
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# What is installed finds our libraries by its own place, and others where they were found. It is linked so from the start
# (BUILD_WITH_INSTALL_RPATH), and the build folder holds program and libraries at the places that they have to each other
# once installed. To change the search path at installation, CMake would end that of the build folder in an empty element,
# by which the loader searches the working folder.
set(SM_LIBRARY_FOLDER "${PROJECT_BINARY_DIR}/Apps/${CMAKE_INSTALL_LIBDIR}")
set(CMAKE_INSTALL_RPATH_USE_LINK_PATH ON)

# Repeated builds, also of other clones of the project: paths below the project are hashed relative to it.
find_program(SM_CCACHE ccache)
if(SM_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND};-E;env;CCACHE_BASEDIR=${PROJECT_SOURCE_DIR};CCACHE_NOHASHDIR=1"
    "CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime;${SM_CCACHE}")
endif()

if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  # Without the time of the build inside, the compiler cache can serve what precompiled headers take part in.
  add_compile_options("SHELL:-Xclang -fno-pch-timestamp")
endif()

file(RELATIVE_PATH SM_SOURCE_FROM_BUILD "${CMAKE_BINARY_DIR}" "${PROJECT_SOURCE_DIR}")
string(REGEX REPLACE "/$" "" SM_SOURCE_FROM_BUILD "${SM_SOURCE_FROM_BUILD}")
add_library(sm_options INTERFACE)
target_compile_features(sm_options INTERFACE cxx_std_20)
target_compile_options(sm_options INTERFACE
  -ffp-contract=off
  # Exceptions record where they were thrown: the path inside the project, not that of the building machine.
  # The compiler cache hands the compiler paths relative to the build folder.
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=
  -ffile-prefix-map=${SM_SOURCE_FROM_BUILD}/=
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # g++ 12 warns of overlapping copies inside std::string concatenation where there are none (its bug 105651).
  target_compile_options(sm_options INTERFACE -Wno-restrict)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # No function of ours is replaced at load time; without this, none of a shared library is inlined in itself.
  target_compile_options(sm_options INTERFACE -fno-semantic-interposition)
endif()
# A library calls its own copies of inline functions. Without this they would be replaced by those of the program, compiled
# with that program's options: other ones may change the last bits of results, and unoptimised ones take many times as long.
target_link_options(sm_options INTERFACE -Wl,--no-undefined -Wl,--as-needed -Wl,-Bsymbolic-functions)

# What guides the fuzzers: counters in the code that they reach. Elsewhere these would only cost: a third of the compiler's
# time, and a quarter of that of a test that computes.
add_library(sm_fuzzer_guidance INTERFACE)

if(SM_SANITIZERS)
  string(REPLACE "," ";" _sanitizers "${SM_SANITIZERS}")
  foreach(_sanitizer IN LISTS _sanitizers)
    if(_sanitizer STREQUAL "fuzzer-no-link")
      target_compile_options(sm_fuzzer_guidance INTERFACE -fsanitize=${_sanitizer})
    else()
      target_compile_options(sm_options INTERFACE -fsanitize=${_sanitizer} -fno-omit-frame-pointer)
    endif()
    target_link_options(sm_options INTERFACE -fsanitize=${_sanitizer})
  endforeach()
  if("undefined" IN_LIST _sanitizers)
    target_compile_options(sm_options INTERFACE -fno-sanitize-recover=undefined)
  endif()
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # By a name that identifies the content and, with Ninja, not the folder: the compiler cache, which knows the list by
    # its name alone, then serves every clone and nothing that was compiled with another list.
    set(_ignores "${PROJECT_SOURCE_DIR}/cmake/sanitizer-ignores.txt")
    file(SHA1 "${_ignores}" _digest)
    configure_file("${_ignores}" "${CMAKE_BINARY_DIR}/sanitizer-ignores-${_digest}.txt" COPYONLY)
    set(_folder "${CMAKE_BINARY_DIR}/")
    if(CMAKE_GENERATOR MATCHES "Ninja")
      set(_folder "")
    endif()
    target_compile_options(sm_options INTERFACE "-fsanitize-ignorelist=${_folder}sanitizer-ignores-${_digest}.txt")
    # Shared libraries leave the run-time symbols of the sanitizer to the program.
    get_target_property(_options sm_options INTERFACE_LINK_OPTIONS)
    list(REMOVE_ITEM _options -Wl,--no-undefined)
    set_target_properties(sm_options PROPERTIES INTERFACE_LINK_OPTIONS "${_options}")
  endif()
endif()
