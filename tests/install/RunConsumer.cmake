file(REMOVE_RECURSE "${WORK_DIR}")
set(PREFIX "${WORK_DIR}/prefix")

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGV}\nended with ${result}:\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${PREFIX}")

# Sanitizers must be the same on both sides of a shared library.
set(flags "")
if(SANITIZERS)
  set(flags "-fsanitize=${SANITIZERS}")
endif()
run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${WORK_DIR}/build" -G Ninja "-DCMAKE_PREFIX_PATH=${PREFIX}"
  "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" "-DCMAKE_C_COMPILER=${C_COMPILER}" "-DCMAKE_CXX_FLAGS=${flags}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/build")
run("${WORK_DIR}/build/consumer")
if(NOT output MATCHES "corner 4 0 2\\.5")
  message(FATAL_ERROR "the consumer printed:\n${output}")
endif()

run("${PREFIX}/bin/screenmanager" --version)
if(NOT output MATCHES "^screenmanager [0-9]+\\.[0-9]+\\.[0-9]+")
  message(FATAL_ERROR "the installed program printed:\n${output}")
endif()
if(NOT EXISTS "${PREFIX}/share/man/man1/screenmanager.1")
  message(FATAL_ERROR "the manual page is not installed")
endif()
