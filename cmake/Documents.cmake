# The pages, and the drawings in them, which the program makes of the displays that the pages show. They are made with
# everything else, so that whoever installs has them, and by themselves:
#   cmake --build build/release --target documents
# Under the sanitizers they are made by that target alone.
file(GLOB_RECURSE _pages CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/docs/*.md" "${PROJECT_SOURCE_DIR}/docs/*.rng"
  "${PROJECT_SOURCE_DIR}/docs/*.png")
set(_made "${PROJECT_BINARY_DIR}/docs/made")
add_custom_command(OUTPUT "${_made}"
  COMMAND "${PROJECT_SOURCE_DIR}/scripts/documents" "$<TARGET_FILE:screenmanager>" "${PROJECT_SOURCE_DIR}/docs"
    "${PROJECT_BINARY_DIR}/docs"
  COMMAND "${CMAKE_COMMAND}" -E touch "${_made}"
  DEPENDS screenmanager "${PROJECT_SOURCE_DIR}/scripts/documents" ${_pages}
  COMMENT "Drawing the axes of every kind of display"
  VERBATIM)
if(SM_SANITIZERS)
  add_custom_target(documents DEPENDS "${_made}")
else()
  add_custom_target(documents ALL DEPENDS "${_made}")
endif()
