# vanta_embed_text(target header FILES files...) compiles text files into a target. The header declares for each file
# name.txt a constant `extern const std::string_view kName`, in namespace vanta::text, and name_of_two.txt is
# kNameOfTwo. The last line break of a file is left out.
#
# The build runs this same file as a script, which writes the source: OUTPUT, HEADER and FILES.
function(vanta_embed_text target header)
  cmake_parse_arguments(TEXT "" "" "FILES" ${ARGN})
  list(TRANSFORM TEXT_FILES PREPEND ${PROJECT_SOURCE_DIR}/)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/embedded_texts.cpp)
  add_custom_command(OUTPUT ${source}
    COMMAND ${CMAKE_COMMAND} -DOUTPUT=${source} -DHEADER=${header} "-DFILES=${TEXT_FILES}"
            -P ${PROJECT_SOURCE_DIR}/cmake/embed_text.cmake
    DEPENDS ${TEXT_FILES} ${PROJECT_SOURCE_DIR}/cmake/embed_text.cmake
    VERBATIM)
  target_sources(${target} PRIVATE ${source})
endfunction()

if(CMAKE_SCRIPT_MODE_FILE)
  set(source "#include \"${HEADER}\"\n\nnamespace vanta::text {\n\n")
  foreach(file IN LISTS FILES)
    get_filename_component(stem ${file} NAME_WE)
    string(REPLACE "_" ";" words ${stem})
    set(name k)
    foreach(word IN LISTS words)
      string(SUBSTRING ${word} 0 1 initial)
      string(SUBSTRING ${word} 1 -1 rest)
      string(TOUPPER ${initial} initial)
      string(APPEND name ${initial}${rest})
    endforeach()
    file(READ ${file} content)
    string(REGEX REPLACE "\n$" "" content "${content}")
    string(APPEND source "const std::string_view ${name} = R\"~~~(${content})~~~\";\n\n")
  endforeach()
  file(WRITE ${OUTPUT} "${source}}  // namespace vanta::text\n")
endif()
