# Who may include whom. A room sees itself and the rooms named behind it, nothing else: the build of
# a room fails when one of its files includes what stands above it.
set(VANTA_ROOMS foundation kernel wave dsp plugin styles limiter factory unified offline cli)

set(VANTA_DIR_foundation foundation)
set(VANTA_DIR_kernel     dsp/kernel)
set(VANTA_DIR_wave       wave)
set(VANTA_DIR_dsp        dsp)
set(VANTA_DIR_plugin     plugin)
set(VANTA_DIR_styles     limiter/styles)
set(VANTA_DIR_limiter    limiter)
set(VANTA_DIR_factory    limiter/factory)
set(VANTA_DIR_unified    host/unified)
set(VANTA_DIR_offline    host/offline)
set(VANTA_DIR_cli        app)

set(VANTA_SEES_foundation)
set(VANTA_SEES_kernel)
set(VANTA_SEES_wave       foundation kernel)
set(VANTA_SEES_dsp        foundation kernel wave)
set(VANTA_SEES_plugin     foundation kernel wave)
set(VANTA_SEES_styles     foundation)
set(VANTA_SEES_limiter    foundation kernel wave dsp plugin styles)
set(VANTA_SEES_factory    foundation plugin limiter)
set(VANTA_SEES_unified    foundation kernel wave dsp plugin limiter factory)
set(VANTA_SEES_offline    foundation kernel wave dsp plugin limiter factory unified)
set(VANTA_SEES_cli        foundation wave dsp plugin limiter factory unified offline)

# vanta_room(NAME HEADERS h... SOURCES s... [LIBRARIES l...])
# Makes the static library vanta_NAME from the current folder. LIBRARIES are further link targets
# from outside the house.
function(vanta_room name)
  cmake_parse_arguments(ROOM "" "" "HEADERS;SOURCES;LIBRARIES" ${ARGN})
  set(target vanta_${name})
  add_library(${target} STATIC ${ROOM_SOURCES})
  target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${ROOM_HEADERS})
  target_link_libraries(${target} PRIVATE vanta_warnings)
  set(allowed ${VANTA_DIR_${name}})
  foreach(seen ${VANTA_SEES_${name}})
    target_link_libraries(${target} PUBLIC vanta_${seen})
    list(APPEND allowed ${VANTA_DIR_${seen}})
  endforeach()
  target_link_libraries(${target} PUBLIC fmt::fmt Threads::Threads ${ROOM_LIBRARIES})

  list(TRANSFORM ROOM_HEADERS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/ OUTPUT_VARIABLE headers)
  list(TRANSFORM ROOM_SOURCES PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/ OUTPUT_VARIABLE sources)
  list(FILTER sources EXCLUDE REGEX "${PROJECT_BINARY_DIR}")
  set(stamp ${CMAKE_CURRENT_BINARY_DIR}/${target}.layers)
  add_custom_command(OUTPUT ${stamp}
    COMMAND ${CMAKE_COMMAND} "-DALLOWED=${allowed}" "-DFILES=${headers};${sources}" "-DROOT=${PROJECT_SOURCE_DIR}"
            -P ${PROJECT_SOURCE_DIR}/cmake/check_layers.cmake
    COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
    DEPENDS ${headers} ${sources} ${PROJECT_SOURCE_DIR}/cmake/check_layers.cmake ${PROJECT_SOURCE_DIR}/cmake/layers.cmake
    VERBATIM)
  add_custom_target(${target}_layers DEPENDS ${stamp})
  add_dependencies(${target} ${target}_layers)
endfunction()

# vanta_test(NAME SOURCES s... LIBRARIES l...): one GoogleTest program, registered with ctest as one test.
function(vanta_test name)
  cmake_parse_arguments(T "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(test_${name} ${T_SOURCES})
  target_link_libraries(test_${name} PRIVATE vanta_warnings vanta_test_support ${T_LIBRARIES} GTest::gtest GTest::gmock GTest::gtest_main)
  target_precompile_headers(test_${name} REUSE_FROM vanta_test_pch)
  add_test(NAME ${name} COMMAND test_${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 600)
endfunction()
