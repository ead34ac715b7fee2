# The target `package`: a zip to be unpacked in the workstation's plug-in folder. Beside the DLL it makes one folder, so that
# plug-ins do not share a README.

install(TARGETS EMEGArtifactPlugin LIBRARY DESTINATION . RUNTIME DESTINATION .)
install(FILES README.md LICENSE DESTINATION EMEGArtifactPlugin)

# The DLL carries parts of MinGW-w64's runtime library, whose licence asks for its notice.
set(notice /usr/share/doc/mingw-w64-x86-64-dev/copyright)
if(EXISTS ${notice})
  install(FILES ${notice} DESTINATION EMEGArtifactPlugin RENAME LICENSE.MinGW-w64)
else()
  message(STATUS "${notice} is not there: the zip goes without the notice of MinGW-w64's runtime library")
endif()

set(CPACK_GENERATOR ZIP)
# As the plug-in tells its host.
set(CPACK_PACKAGE_VERSION 1.0)
set(CPACK_PACKAGE_FILE_NAME EMEGArtifactPlugin-${CPACK_PACKAGE_VERSION}-windows-x64)
set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY OFF)
include(CPack)
