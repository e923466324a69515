# What `make install` has put into the system, and how `make uninstall` takes just that away again. The list lies with
# what it lists, so that it needs no build folder, and one installation knows nothing of another.
#
# As a script it uninstalls: cmake -DPREFIX=... -DDESTDIR=... -P installed_files.cmake

# Below the prefix.
set(VANTA_INSTALLED_FILES share/vanta/installed_files)

# vanta_missing_folders(OUT folders...): those of them, and of what they lie in, that do not exist below DESTDIR.
function(vanta_missing_folders out)
  set(missing)
  foreach(folder ${ARGN})
    while(NOT folder STREQUAL "/" AND NOT EXISTS "$ENV{DESTDIR}${folder}")
      list(APPEND missing "${folder}")
      cmake_path(GET folder PARENT_PATH folder)
    endwhile()
  endforeach()
  list(REMOVE_DUPLICATES missing)
  set(${out} ${missing} PARENT_SCOPE)
endfunction()

# Looks which folders are still to be made. A macro: `vanta_after_install` wants to know.
macro(vanta_before_install)
  vanta_missing_folders(VANTA_NEW_FOLDERS
    ${CMAKE_INSTALL_PREFIX}/bin ${CMAKE_INSTALL_PREFIX}/share/vanta ${CMAKE_INSTALL_PREFIX}/share/man/man1
    ${CMAKE_INSTALL_PREFIX}/share/applications ${CMAKE_INSTALL_PREFIX}/share/metainfo
    ${CMAKE_INSTALL_PREFIX}/share/icons/hicolor/scalable/apps
    ${CMAKE_INSTALL_PREFIX}/lib/lv2 ${CMAKE_INSTALL_PREFIX}/lib/clap ${CMAKE_INSTALL_PREFIX}/lib/vst3)
endmacro()

# Writes the list: what has been installed now, and what an older version has put there.
macro(vanta_after_install)
  set(list "${CMAKE_INSTALL_PREFIX}/${VANTA_INSTALLED_FILES}")
  set(lines ${CMAKE_INSTALL_MANIFEST_FILES} ${list} ${VANTA_NEW_FOLDERS})
  # The folders of a bundle are ours alone.
  foreach(file ${CMAKE_INSTALL_MANIFEST_FILES})
    cmake_path(GET file PARENT_PATH folder)
    while(folder MATCHES "/lib/(lv2|vst3)/.")
      list(APPEND lines ${folder})
      cmake_path(GET folder PARENT_PATH folder)
    endwhile()
  endforeach()
  if(EXISTS "$ENV{DESTDIR}${list}")
    file(STRINGS "$ENV{DESTDIR}${list}" older)
    list(APPEND lines ${older})
  endif()
  list(REMOVE_DUPLICATES lines)
  list(SORT lines)
  list(JOIN lines "\n" lines)
  file(WRITE "$ENV{DESTDIR}${list}" "${lines}\n")
endmacro()

function(vanta_uninstall)
  set(list "${DESTDIR}${PREFIX}/${VANTA_INSTALLED_FILES}")
  if(NOT EXISTS "${list}")
    message(FATAL_ERROR "nothing is installed in ${DESTDIR}${PREFIX}: use the PREFIX and DESTDIR of make install")
  endif()
  file(STRINGS "${list}" lines)
  # What lies in a folder comes before the folder.
  list(SORT lines ORDER DESCENDING)
  foreach(line ${lines})
    set(path "${DESTDIR}${line}")
    if(IS_DIRECTORY "${path}" AND NOT IS_SYMLINK "${path}")
      file(GLOB content LIST_DIRECTORIES true "${path}/*" "${path}/.[!.]*")
      if(NOT content)
        file(REMOVE_RECURSE "${path}")
      endif()
    else()
      file(REMOVE "${path}")
    endif()
  endforeach()
  message(STATUS "Uninstalled from ${DESTDIR}${PREFIX}")
endfunction()

if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
  vanta_uninstall()
endif()
