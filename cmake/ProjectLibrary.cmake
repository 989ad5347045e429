# sm_add_library(NAME SOURCES a.cpp b.cpp [GUIDING a.cpp...] [PUBLIC lib...] [PRIVATE lib...])
#
# One shared library of a layer. All libraries are shared, so that a singleton exists once in a process. Sources are
# listed by hand: one class, one header, one source, one line. Headers are exported from include/ and Platform/. The files
# carry the product's name: a folder of libraries is shared with other products. GUIDING: the sources that guide the
# fuzzers, where these reach few of them; all when not given.
function(sm_add_library NAME)
  cmake_parse_arguments(ARG "" "" "SOURCES;GUIDING;PUBLIC;PRIVATE" ${ARGN})
  add_library(${NAME} SHARED ${ARG_SOURCES})
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
  string(REGEX REPLACE "^ScreenManager" "" _file "${NAME}")
  set_target_properties(${NAME} PROPERTIES OUTPUT_NAME "ScreenManager${_file}" LIBRARY_OUTPUT_DIRECTORY "${SM_LIBRARY_FOLDER}"
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
