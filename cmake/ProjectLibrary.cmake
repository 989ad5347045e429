# sm_batch(NAME KIND [ALONE a.cpp...])
#
# Where SM_BATCHED names the KIND of a target, its sources are compiled eight at a time, each batch as one source that includes
# them: what they all include is read once, and what they all instantiate is compiled once. ALONE: the sources that are compiled
# by themselves nevertheless, since names in their unnamed namespaces are used in those of other sources of the target as well,
# and those that get options of their own later. A batch names its sources relative to the project, so that the compiler cache
# serves every clone.
function(sm_batch NAME KIND)
  cmake_parse_arguments(ARG "" "" "ALONE" ${ARGN})
  string(REPLACE "," ";" _kinds "${SM_BATCHED}")
  if(NOT KIND IN_LIST _kinds)
    return()
  endif()
  get_target_property(_sources ${NAME} SOURCES)
  set(_paths "")
  foreach(_source IN LISTS _sources)
    get_source_file_property(_options "${_source}" COMPILE_OPTIONS)
    get_source_file_property(_definitions "${_source}" COMPILE_DEFINITIONS)
    if(NOT _source IN_LIST ARG_ALONE AND NOT _options AND NOT _definitions)
      list(REMOVE_ITEM _sources "${_source}")
      cmake_path(ABSOLUTE_PATH _source NORMALIZE)
      cmake_path(RELATIVE_PATH _source BASE_DIRECTORY "${PROJECT_SOURCE_DIR}")
      list(APPEND _paths "${_source}")
    endif()
  endforeach()
  set(_foreign "")
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    set(_foreign "#pragma GCC diagnostic ignored \"-Wsubobject-linkage\"\n")
  endif()
  set(_number 0)
  while(_paths)
    math(EXPR _number "${_number} + 1")
    list(SUBLIST _paths 0 8 _batch)
    list(REMOVE_ITEM _paths ${_batch})
    # A variable may hide a name of another source in its batch, and g++ takes a source that is included for a header, whose
    # classes may not have members of unnamed namespaces. Where each is compiled by itself, both are checked.
    string(REGEX REPLACE "([^;]+);?" "#include \"\\1\"\n" _text "${_batch}")
    set(_file "${CMAKE_CURRENT_BINARY_DIR}/${NAME}-batch-${_number}.cpp")
    file(CONFIGURE OUTPUT "${_file}" CONTENT "#pragma GCC diagnostic ignored \"-Wshadow\"\n${_foreign}${_text}" @ONLY)
    list(APPEND _sources "${_file}")
  endwhile()
  set_property(TARGET ${NAME} PROPERTY SOURCES ${_sources})
  target_include_directories(${NAME} PRIVATE "${PROJECT_SOURCE_DIR}")
endfunction()

# sm_add_library(NAME [STATIC] SOURCES a.cpp b.cpp [GUIDING a.cpp...] [ALONE a.cpp...] [PUBLIC lib...] [PRIVATE lib...])
#
# One shared library of a layer. Libraries are shared, so that a singleton exists once in a process. STATIC: one without a
# singleton, which every program that uses it takes into itself instead of loading one library more. Sources are
# listed by hand: one class, one header, one source, one line. Headers are exported from include/ and Platform/. The files
# carry the product's name: a folder of libraries is shared with other products. GUIDING: the sources that guide the
# fuzzers, where these reach few of them; all when not given. ALONE: those that take no part in batches (sm_batch).
function(sm_add_library NAME)
  cmake_parse_arguments(ARG "STATIC" "" "SOURCES;GUIDING;ALONE;PUBLIC;PRIVATE" ${ARGN})
  set(_kind SHARED)
  if(ARG_STATIC)
    set(_kind STATIC)
  endif()
  add_library(${NAME} ${_kind} ${ARG_SOURCES})
  add_library(ScreenManager::${NAME} ALIAS ${NAME})
  target_compile_features(${NAME} PUBLIC cxx_std_20)
  target_include_directories(${NAME} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/Platform>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/screenmanager>)
  target_link_libraries(${NAME} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE} $<BUILD_INTERFACE:sm_options>)
  if(ARG_GUIDING)
    set_property(SOURCE ${ARG_GUIDING} APPEND PROPERTY COMPILE_OPTIONS
      $<TARGET_PROPERTY:sm_fuzzer_guidance,INTERFACE_COMPILE_OPTIONS>)
  else()
    target_link_libraries(${NAME} PRIVATE $<BUILD_INTERFACE:sm_fuzzer_guidance>)
  endif()
  sm_batch(${NAME} libraries ALONE ${ARG_ALONE})
  string(REGEX REPLACE "^ScreenManager" "" _file "${NAME}")
  set_target_properties(${NAME} PROPERTIES OUTPUT_NAME "ScreenManager${_file}" LIBRARY_OUTPUT_DIRECTORY "${SM_LIBRARY_FOLDER}"
    POSITION_INDEPENDENT_CODE ON
    INSTALL_RPATH "$ORIGIN" BUILD_WITH_INSTALL_RPATH ON)
  set_target_properties(${NAME} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  set_property(GLOBAL APPEND PROPERTY SM_LIBRARIES ${NAME})
endfunction()

# sm_add_module(NAME FOR library OPENER file PREFIX prefix SOURCES a.cpp... LINK lib...)
#
# What a library opens when it is first needed, since it brings many other shared libraries with it; it lies beside the
# library. OPENER: the source that opens it, which gets the names of file and entry as PREFIX_MODULE and
# PREFIX_MODULE_ENTRY; the sources get the entry as PREFIX_MODULE_FUNCTION. Both names carry the version, so that modules of
# two installations cannot be mistaken.
function(sm_add_module NAME)
  cmake_parse_arguments(ARG "" "FOR;OPENER;PREFIX" "SOURCES;LINK" ${ARGN})
  set(_version ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  string(TOLOWER "${NAME}_${_version}" _entry)
  string(MAKE_C_IDENTIFIER "${_entry}" _entry)
  add_library(${NAME} MODULE ${ARG_SOURCES})
  target_include_directories(${NAME} PRIVATE $<TARGET_PROPERTY:${ARG_FOR},INCLUDE_DIRECTORIES>)
  target_link_libraries(${NAME} PRIVATE ${ARG_LINK} sm_options)
  target_compile_definitions(${NAME} PRIVATE ${ARG_PREFIX}_MODULE_FUNCTION=${_entry})
  set_target_properties(${NAME} PROPERTIES OUTPUT_NAME ${NAME}-${_version}
    LIBRARY_OUTPUT_DIRECTORY "${SM_LIBRARY_FOLDER}" BUILD_WITH_INSTALL_RPATH ON)
  set_property(SOURCE ${ARG_OPENER} APPEND PROPERTY COMPILE_DEFINITIONS
    ${ARG_PREFIX}_MODULE="lib${NAME}-${_version}.so" ${ARG_PREFIX}_MODULE_ENTRY="${_entry}")
  add_dependencies(${ARG_FOR} ${NAME})
  set_property(GLOBAL APPEND PROPERTY SM_MODULES ${NAME})
endfunction()
