# What is installed, and where. `product` builds all of it. Included once every target is known.
set(VANTA_INSTALL_DIR ${PROJECT_BINARY_DIR}/install)
# The day of a build that is to give the same bytes again comes from SOURCE_DATE_EPOCH.
string(TIMESTAMP VANTA_BUILD_DATE %Y-%m-%d UTC)

# What is there already is not ours to remove later: see installed_files.cmake.
install(CODE "include(\"${PROJECT_SOURCE_DIR}/cmake/installed_files.cmake\")\nvanta_before_install()")

install(TARGETS vanta vanta-app vanta-jack vanta-scope RUNTIME DESTINATION bin COMPONENT programs)

# Hosts look in lib, whatever the machine's own folder of libraries is called.
set(modules)
if(TARGET vanta_lv2)
  list(APPEND modules vanta_lv2)
  foreach(bundle vanta.lv2 vanta-presets.lv2)
    install(DIRECTORY ${VANTA_PLUGINS_DIR}/${bundle} DESTINATION lib/lv2 USE_SOURCE_PERMISSIONS COMPONENT plugins)
  endforeach()
endif()
if(TARGET vanta_clap)
  list(APPEND modules vanta_clap)
  install(PROGRAMS ${VANTA_PLUGINS_DIR}/vanta.clap DESTINATION lib/clap COMPONENT plugins)
endif()
if(TARGET vanta_vst3)
  list(APPEND modules vanta_vst3)
  install(DIRECTORY ${VANTA_PLUGINS_DIR}/vanta.vst3 DESTINATION lib/vst3 USE_SOURCE_PERMISSIONS COMPONENT plugins)
endif()

# vanta_man_page(PROGRAM SUMMARY SEE-ALSO...)
function(vanta_man_page program summary)
  set(page ${VANTA_INSTALL_DIR}/${program}.1)
  add_custom_command(OUTPUT ${page}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${VANTA_INSTALL_DIR}
    COMMAND man_page $<TARGET_FILE:${program}> ${program} ${summary} "${VANTA_PRODUCT_NAME} ${PROJECT_VERSION}"
            ${VANTA_BUILD_DATE} ${ARGN} > ${page}
    DEPENDS man_page ${program}
    VERBATIM)
  set_property(GLOBAL APPEND PROPERTY vanta_man_pages ${page})
  install(FILES ${page} DESTINATION share/man/man1 COMPONENT documentation)
endfunction()
vanta_man_page(vanta "mastering limiter for audio files" vanta-jack vanta-scope)
vanta_man_page(vanta-app "mastering limiter in a window of its own" vanta vanta-jack)
vanta_man_page(vanta-jack "mastering limiter as a client of JACK" vanta)
vanta_man_page(vanta-scope "window onto a file that plays through a mastering limiter" vanta)

set(templates ${PROJECT_SOURCE_DIR}/resources/install)
configure_file(${templates}/vanta-jack.desktop.in ${VANTA_INSTALL_DIR}/vanta-jack.desktop @ONLY)
configure_file(${templates}/metainfo.xml.in ${VANTA_INSTALL_DIR}/${VANTA_ID}.metainfo.xml @ONLY)
install(FILES ${VANTA_INSTALL_DIR}/vanta-jack.desktop DESTINATION share/applications COMPONENT desktop)
install(FILES ${VANTA_INSTALL_DIR}/${VANTA_ID}.metainfo.xml DESTINATION share/metainfo COMPONENT desktop)
install(FILES ${templates}/vanta.svg DESTINATION share/icons/hicolor/scalable/apps COMPONENT desktop)

install(CODE "vanta_after_install()")

get_property(pages GLOBAL PROPERTY vanta_man_pages)
add_custom_target(product ALL DEPENDS ${pages})
add_dependencies(product vanta vanta-app vanta-jack vanta-scope plugins ${modules})
