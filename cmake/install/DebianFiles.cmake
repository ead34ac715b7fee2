# What Debian asks of every package beyond the installed files: its copyright, its changelog, compressed pages. Runs on the
# staged files before the packages are made of them.

set(source ${CMAKE_CURRENT_LIST_DIR}/../..)
file(STRINGS ${source}/CHANGELOG.md release REGEX "^## \\[${CPACK_PACKAGE_VERSION}\\] - [0-9-]+$")
string(REGEX REPLACE ".* - " "" day "${release}")
if(NOT day)
  message(FATAL_ERROR "CHANGELOG.md does not tell the day of version ${CPACK_PACKAGE_VERSION}")
endif()
execute_process(COMMAND date -u -R -d "${day} 12:00" OUTPUT_VARIABLE day OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)

file(STRINGS ${source}/LICENSE licence)
set(licenceText)
set(holder "2026 ${CPACK_PACKAGE_CONTACT}")
foreach(line IN LISTS licence)
  if(line MATCHES "^Copyright *(\\([cC]\\))? *(.*)$")
    set(holder "${CMAKE_MATCH_2}")
  elseif(line)
    string(APPEND licenceText " ${line}\n")
  elseif(licenceText)
    string(APPEND licenceText " .\n")
  endif()
endforeach()

function(compress file)
  execute_process(COMMAND gzip -9nf ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(complete group package)
  set(doc ${CPACK_TEMPORARY_DIRECTORY}/${group}${CPACK_PACKAGING_INSTALL_PREFIX}/share/doc)
  file(MAKE_DIRECTORY ${doc}/${package})
  file(WRITE ${doc}/${package}/copyright
    "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n\n"
    "Files: *\nCopyright: ${holder}\nLicense: Expat\n${licenceText}")
  file(WRITE ${doc}/${package}/changelog.Debian
    "emeg (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium\n\n"
    "  * Version ${CPACK_PACKAGE_VERSION}.\n\n -- ${CPACK_PACKAGE_CONTACT}  ${day}\n")
  compress(${doc}/${package}/changelog.Debian)
endfunction()

complete(program emeg)
complete(library ${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME})
complete(development ${CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME})

set(program ${CPACK_TEMPORARY_DIRECTORY}/program${CPACK_PACKAGING_INSTALL_PREFIX}/share)
file(REMOVE ${program}/doc/emeg/LICENSE) # the same as the copyright
file(RENAME ${program}/doc/emeg/CHANGELOG.md ${program}/doc/emeg/changelog)
compress(${program}/doc/emeg/changelog)
file(GLOB pages ${program}/man/man1/*.1)
foreach(page IN LISTS pages)
  compress(${page})
endforeach()
