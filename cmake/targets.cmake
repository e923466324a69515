# Links `target` with the rooms that its folder, the current one, sees.
function(vanta_link_rooms target visibility)
  file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  string(REPLACE "/" "_" name ${folder})
  get_property(sees GLOBAL PROPERTY vanta_sees_${name})
  foreach(seen ${sees})
    string(REPLACE "/" "_" seen ${seen})
    # A folder of programs, such as bench, may have headers for another and nothing to link.
    if(TARGET vanta_${seen})
      get_target_property(kind vanta_${seen} TYPE)
      if(NOT kind STREQUAL EXECUTABLE)
        target_link_libraries(${target} ${visibility} vanta_${seen})
      endif()
    endif()
  endforeach()
  add_dependencies(${target} layers_${name})
endfunction()

# vanta_room(HEADERS h... SOURCES s... [LIBRARIES l...])
# Makes the current folder a static library, vanta_ and its path, which links the rooms that it sees. LIBRARIES are
# further link targets from outside the house.
function(vanta_room)
  cmake_parse_arguments(ROOM "" "" "HEADERS;SOURCES;LIBRARIES" ${ARGN})
  file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  string(REPLACE "/" "_" name ${folder})
  set(target vanta_${name})
  add_library(${target} STATIC ${ROOM_SOURCES})
  target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${ROOM_HEADERS})
  target_link_libraries(${target} PRIVATE vanta_warnings)
  vanta_link_rooms(${target} PUBLIC)
  target_link_libraries(${target} PUBLIC fmt::fmt Threads::Threads ${ROOM_LIBRARIES})
endfunction()

# vanta_test(NAME SOURCES s... [LIBRARIES l...]): one GoogleTest program, registered with ctest as one test. It links
# the rooms that its folder sees.
function(vanta_test name)
  cmake_parse_arguments(T "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(test_${name} ${T_SOURCES})
  target_link_libraries(test_${name} PRIVATE vanta_warnings vanta_test_support ${T_LIBRARIES} GTest::gtest GTest::gmock GTest::gtest_main)
  vanta_link_rooms(test_${name} PRIVATE)
  target_precompile_headers(test_${name} REUSE_FROM vanta_test_pch)
  add_test(NAME ${name} COMMAND test_${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 600)
endfunction()
