# install(): libraries, exported headers, the program with its manual page, and a CMake package, so that
#   find_package(ScreenManager) and target_link_libraries(mine ScreenManager::ScreenManager)
# is all that a program outside this tree needs.
include(CMakePackageConfigHelpers)

set(SM_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/ScreenManager")
set(SM_HEADER_DIR "${CMAKE_INSTALL_INCLUDEDIR}/screenmanager")

get_property(_libraries GLOBAL PROPERTY SM_LIBRARIES)
install(TARGETS ${_libraries} EXPORT ScreenManagerTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
get_property(_modules GLOBAL PROPERTY SM_MODULES)
install(TARGETS ${_modules} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS screenmanager RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(EXPORT ScreenManagerTargets NAMESPACE ScreenManager:: DESTINATION ${SM_PACKAGE_DIR})

# Headers below a folder named "detail" belong to one library and are not exported.
install(DIRECTORY include/ Platform/ DESTINATION ${SM_HEADER_DIR}
  FILES_MATCHING PATTERN "*.h" PATTERN "detail" EXCLUDE)

configure_package_config_file(cmake/ScreenManagerConfig.cmake.in
  "${PROJECT_BINARY_DIR}/ScreenManagerConfig.cmake" INSTALL_DESTINATION ${SM_PACKAGE_DIR})
write_basic_package_version_file("${PROJECT_BINARY_DIR}/ScreenManagerConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/ScreenManagerConfig.cmake"
  "${PROJECT_BINARY_DIR}/ScreenManagerConfigVersion.cmake"
  cmake/FindPointCloudLibrary.cmake
  DESTINATION ${SM_PACKAGE_DIR})

get_target_property(_completions screenmanager SM_COMPLETIONS)
install(FILES "${_completions}/screenmanager" DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES "${_completions}/_screenmanager" DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(FILES "${_completions}/screenmanager.fish" DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
install(FILES docs/screenmanager.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md" PATTERN "*.rng" PATTERN "*.schema.json")
# Where the target `documents` has made them.
install(DIRECTORY "${PROJECT_BINARY_DIR}/docs/displays/" DESTINATION ${CMAKE_INSTALL_DOCDIR}/displays OPTIONAL
  FILES_MATCHING PATTERN "*.svg")
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples
  PATTERN "*.cpp" EXCLUDE PATTERN "CMakeLists.txt" EXCLUDE)
