# Headers of the plug-in formats, from where Debian puts them. As system headers: their warnings are not ours.
find_path(VANTA_FORMAT_HEADERS clap/entry.h PATHS /usr/share/dpf/distrho/src NO_DEFAULT_PATH REQUIRED)
add_library(vanta_format_headers INTERFACE)
target_include_directories(vanta_format_headers SYSTEM INTERFACE ${VANTA_FORMAT_HEADERS})
pkg_check_modules(LV2 REQUIRED IMPORTED_TARGET lv2)
pkg_check_modules(JACK REQUIRED IMPORTED_TARGET jack)

set(VANTA_PLUGINS_DIR ${CMAKE_BINARY_DIR}/plugins)
add_custom_target(plugins ALL)

# vanta_plugin_module(TARGET FILE SOURCES s...): a module that hosts load, at FILE below build/plugins. It exports what
# its sources mark as exported and nothing of what it links.
function(vanta_plugin_module target file)
  cmake_parse_arguments(M "" "" "SOURCES" ${ARGN})
  cmake_path(GET file PARENT_PATH folder)
  cmake_path(GET file STEM name)
  cmake_path(GET file EXTENSION suffix)
  add_library(${target} MODULE ${M_SOURCES})
  set_target_properties(${target} PROPERTIES PREFIX "" OUTPUT_NAME ${name} SUFFIX ${suffix}
    LIBRARY_OUTPUT_DIRECTORY ${VANTA_PLUGINS_DIR}/${folder})
  target_link_libraries(${target} PRIVATE vanta_warnings)
  target_link_options(${target} PRIVATE -Wl,--exclude-libs,ALL)
  if(NOT VANTA_SANITIZE)
    target_link_options(${target} PRIVATE -Wl,--no-undefined)
  endif()
  vanta_link_rooms(${target} PRIVATE)
  add_dependencies(plugins ${target})
endfunction()
