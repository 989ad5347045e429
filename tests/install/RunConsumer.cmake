file(REMOVE_RECURSE "${WORK_DIR}")
set(PREFIX "${WORK_DIR}/prefix")
set(FOLDER "${WORK_DIR}")
file(MAKE_DIRECTORY "${FOLDER}")

# Runs a command in FOLDER; its output, standard error included, is in `output` afterwards.
function(run)
  execute_process(COMMAND ${ARGV} WORKING_DIRECTORY "${FOLDER}"
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGV}\nended with ${result}:\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${PREFIX}")

run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${WORK_DIR}/build" -G Ninja "-DCMAKE_PREFIX_PATH=${PREFIX}"
  "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" "-DCMAKE_C_COMPILER=${C_COMPILER}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/build")
run("${WORK_DIR}/build/consumer")
if(NOT output MATCHES "corner 4 0 2\\.5")
  message(FATAL_ERROR "the consumer printed:\n${output}")
endif()

run("${WORK_DIR}/build/locator" "${SOURCE_DIR}/../../../examples/planar-wall/display.xml")
if(NOT output MATCHES "Upper left: 160 targets, the first at \\(-3, 5, 2\\.8999999999999999\\)\n.*\nLower right: 160 targets")
  message(FATAL_ERROR "the consumer of locators printed:\n${output}")
endif()
# Nothing serves at these ports, which only the root of this machine could open.
run("${WORK_DIR}/build/talks")
foreach(number IN ITEMS 1 2)
  if(NOT output MATCHES "PJLink projector 02000000000${number} at 127\\.0\\.0\\.1:${number}, [^\n]*: Connection refused\n")
    message(FATAL_ERROR "the consumer of talks printed:\n${output}")
  endif()
endforeach()

run("${WORK_DIR}/build/devices")
if(NOT output MATCHES "no projector\n$")
  message(FATAL_ERROR "the consumer of devices printed:\n${output}")
endif()
run("${WORK_DIR}/build/command")
if(NOT output STREQUAL "GetLampHours is not supported\n")
  message(FATAL_ERROR "the consumer with a command of its own printed:\n${output}")
endif()
run("${WORK_DIR}/build/maps" "${SOURCE_DIR}/../../../examples/spherical-dome/display.xml")
if(NOT output MATCHES "the middle lies at \\([^\n]*\\), where \\(0\\.(5|49999|50000)[0-9]*, 0\\.(5|49999|50000)[0-9]*\\) is shown\n")
  message(FATAL_ERROR "the consumer of layout maps printed:\n${output}")
endif()
string(REGEX MATCHALL "mapped to \\([^\n]*\\)\n" places "${output}")
list(LENGTH places count)
if(NOT count EQUAL 3)
  message(FATAL_ERROR "the consumer of layout maps printed:\n${output}")
endif()

# Two channels without projectors, which change their places.
file(READ "${SOURCE_DIR}/../../../examples/planar-wall/display.xml" display)
string(REGEX REPLACE "host='192.0.2.1([0-9])' port='4352'" "host='127.0.0.1' port='\\1'" display "${display}")
file(WRITE "${WORK_DIR}/channels.xml" "${display}")
run("${WORK_DIR}/build/channels" "${WORK_DIR}/channels.xml" "${WORK_DIR}/exchanged.xml")
file(READ "${WORK_DIR}/exchanged.xml" display)
if(NOT display MATCHES "02:00:00:00:00:02.*02:00:00:00:00:01.*02:00:00:00:00:03")
  message(FATAL_ERROR "the consumer of channels saved:\n${display}")
endif()

# The page that shows this program shows what it prints, too.
file(MAKE_DIRECTORY "${WORK_DIR}/reports")
set(reports "${WORK_DIR}/build/reports" "${SOURCE_DIR}/../../../examples/planar-wall/display.xml" "${WORK_DIR}/reports")
run(${reports})
execute_process(COMMAND ${reports} OUTPUT_VARIABLE output ERROR_QUIET)
file(READ "${SOURCE_DIR}/../../../docs/reports-in-programs.md" page)
string(FIND "${page}" "\n```\n${output}```\n" place)
if(place EQUAL -1)
  message(FATAL_ERROR "docs/reports-in-programs.md shows another output than:\n${output}")
endif()
foreach(file IN ITEMS targets.csv coverage.json warp.txt)
  file(SIZE "${WORK_DIR}/reports/${file}" size)
  if(size LESS 1000)
    message(FATAL_ERROR "the consumer of reports wrote ${size} bytes to ${file}")
  endif()
endforeach()

execute_process(COMMAND "${WORK_DIR}/build/writing_back" OUTPUT_VARIABLE output ERROR_QUIET)
file(READ "${SOURCE_DIR}/../../../docs/writing-back.md" page)
string(FIND "${page}" "\n```\n${output}```\n" place)
if(place EQUAL -1)
  message(FATAL_ERROR "docs/writing-back.md shows another output than:\n${output}")
endif()

run("${PREFIX}/bin/screenmanager" --version)
if(NOT output MATCHES "^screenmanager [0-9]+\\.[0-9]+\\.[0-9]+")
  message(FATAL_ERROR "the installed program printed:\n${output}")
endif()
foreach(completion IN ITEMS bash-completion/completions/screenmanager zsh/site-functions/_screenmanager
    fish/vendor_completions.d/screenmanager.fish)
  if(NOT EXISTS "${PREFIX}/share/${completion}")
    message(FATAL_ERROR "${completion} is not installed")
  endif()
endforeach()
if(NOT EXISTS "${PREFIX}/share/man/man1/screenmanager.1")
  message(FATAL_ERROR "the manual page is not installed")
endif()
foreach(page IN ITEMS configuration.md display.rng schemas/targets.schema.json first-display.md displays/axes.md)
  if(NOT EXISTS "${PREFIX}/share/doc/ScreenManager/${page}")
    message(FATAL_ERROR "${page} is not installed")
  endif()
endforeach()

# A folder that came from somebody else: each of the files by which log4cxx configures itself empties the victim.
set(VICTIM "${WORK_DIR}/victim.txt")
set(PROPERTIES "log4j.rootLogger=ALL, victim
log4j.appender.victim=org.apache.log4j.FileAppender
log4j.appender.victim.File=${VICTIM}
log4j.appender.victim.Append=false
log4j.appender.victim.layout=org.apache.log4j.SimpleLayout
")
set(XML "<?xml version=\"1.0\"?>
<log4j:configuration xmlns:log4j=\"http://jakarta.apache.org/log4j/\">
<appender name=\"victim\" class=\"org.apache.log4j.FileAppender\"><param name=\"File\" value=\"${VICTIM}\"/>
<param name=\"Append\" value=\"false\"/><layout class=\"org.apache.log4j.SimpleLayout\"/></appender>
<root><priority value=\"all\"/><appender-ref ref=\"victim\"/></root></log4j:configuration>
")

# Runs a command in a folder that holds one of these files, and leaves in `victim` what the victim contains afterwards.
function(run_beside NAME)
  set(FOLDER "${WORK_DIR}/beside-${NAME}")
  if(NAME MATCHES "xml$")
    file(WRITE "${FOLDER}/${NAME}" "${XML}")
  else()
    file(WRITE "${FOLDER}/${NAME}" "${PROPERTIES}")
  endif()
  file(WRITE "${VICTIM}" "precious\n")
  run(${ARGN})
  file(READ "${VICTIM}" victim)
  set(victim "${victim}" PARENT_SCOPE)
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_untouched)
  if(NOT victim STREQUAL "precious\n")
    message(FATAL_ERROR "${ARGV}: a configuration in the working folder was obeyed; the victim is now:\n${victim}")
  endif()
endfunction()

file(GLOB libraries "${PREFIX}/lib*/lib*.so" "${PREFIX}/lib*/*/lib*.so")
list(LENGTH libraries count)
if(count LESS 8)
  message(FATAL_ERROR "only ${count} libraries are installed")
endif()
foreach(name IN ITEMS log4cxx.xml log4cxx.properties log4j.xml log4j.properties)
  foreach(library IN LISTS libraries)
    run_beside(${name} "${WORK_DIR}/build/load_alone" "${library}")
    expect_untouched("${library} beside ${name}")
  endforeach()
  run_beside(${name} "${WORK_DIR}/build/logging")
  expect_untouched("a program without a log beside ${name}")
  if(NOT output MATCHES "appenders 0\n$")
    message(FATAL_ERROR "a program without a log printed:\n${output}")
  endif()
  run_beside(${name} "${WORK_DIR}/build/logging" basic)
  expect_untouched("BasicConfigurator beside ${name}")
  if(NOT output MATCHES "a record of the application.*ScreenManager::ScreenManager\\(\\).*appenders 1\n$")
    message(FATAL_ERROR "a program with the basic configuration printed:\n${output}")
  endif()
  run_beside(${name} "${CMAKE_COMMAND}" -E env "LOG4CXX_CONFIGURATION=${WORK_DIR}/beside-${name}/${name}"
    "${WORK_DIR}/build/logging")
  expect_untouched("${name} in LOG4CXX_CONFIGURATION")
  run_beside(${name} "${PREFIX}/bin/screenmanager" --version)
  expect_untouched("the installed program beside ${name}")

  # The one line that brings the search back, which shows, too, that the file is one to be afraid of.
  run_beside(${name} "${WORK_DIR}/build/logging" search)
  if(NOT victim MATCHES "^WARN - a record of the application\n.*INFO - ScreenManager::ScreenManager\\(\\)\n$")
    message(FATAL_ERROR "the search of log4cxx beside ${name} wrote:\n${victim}")
  endif()
endforeach()

# A configuration that the application itself names.
foreach(way IN ITEMS properties xml)
  run_beside(mine.${way} "${WORK_DIR}/build/logging" ${way} "${WORK_DIR}/beside-mine.${way}/mine.${way}")
  if(NOT victim MATCHES "^WARN - a record of the application\n.*INFO - ScreenManager::ScreenManager\\(\\)\n$")
    message(FATAL_ERROR "the configuration mine.${way} of the application wrote:\n${victim}")
  endif()
endforeach()
