# The pages, and the drawings in them, which the program makes of the displays that the pages show:
#   cmake --build build/release --target documents
add_custom_target(documents
  COMMAND "${PROJECT_SOURCE_DIR}/scripts/documents" "$<TARGET_FILE:screenmanager>" "${PROJECT_SOURCE_DIR}/docs"
    "${PROJECT_BINARY_DIR}/docs"
  DEPENDS screenmanager
  COMMENT "Drawing the axes of every kind of display"
  VERBATIM)
