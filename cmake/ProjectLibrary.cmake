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
