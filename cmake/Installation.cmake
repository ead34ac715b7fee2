# What `cmake --install` puts where. Components: program, library, development, documentation, and plugin, which is
# installed only where it is asked for (cmake --install build --component plugin).

if(EMEG_BUILD_PROGRAMS)
  install(TARGETS emeg RUNTIME COMPONENT program)

  # Pages and scripts are printed by the program itself, from the declarations of its options.
  set(pages ${CMAKE_BINARY_DIR}/pages)
  add_custom_command(OUTPUT ${pages}/made
    COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:emeg> -DFOLDER=${pages}
      -P ${CMAKE_SOURCE_DIR}/cmake/install/PrintPages.cmake
    DEPENDS emeg ${CMAKE_SOURCE_DIR}/cmake/install/PrintPages.cmake
    COMMENT "Printing manual pages and completions"
    VERBATIM)
  add_custom_target(emeg_pages ALL DEPENDS ${pages}/made)
  install(DIRECTORY ${pages}/man1 DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT program)
  install(FILES ${pages}/emeg.bash COMPONENT program RENAME emeg
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES ${pages}/_emeg COMPONENT program DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
  install(FILES ${pages}/emeg.fish COMPONENT program DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()

install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(FILES README.md LICENSE CHANGELOG.md CITATION.cff DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)

if(EMEG_BUILD_LIBRARY)
  include(CMakePackageConfigHelpers)
  set(package ${CMAKE_INSTALL_LIBDIR}/cmake/emeg)
  install(TARGETS emeg_library EXPORT emegTargets
    LIBRARY COMPONENT library NAMELINK_COMPONENT development
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(FILES include/emeg/emeg.h include/emeg/emeg.hpp ${CMAKE_BINARY_DIR}/include/emeg/version.h
          DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/emeg COMPONENT development)
  install(EXPORT emegTargets NAMESPACE emeg:: DESTINATION ${package} COMPONENT development)
  configure_package_config_file(cmake/install/emegConfig.cmake.in ${CMAKE_BINARY_DIR}/emegConfig.cmake
    INSTALL_DESTINATION ${package} NO_SET_AND_CHECK_MACRO)
  write_basic_package_version_file(${CMAKE_BINARY_DIR}/emegConfigVersion.cmake COMPATIBILITY SameMajorVersion)
  install(FILES ${CMAKE_BINARY_DIR}/emegConfig.cmake ${CMAKE_BINARY_DIR}/emegConfigVersion.cmake
          DESTINATION ${package} COMPONENT development)

  # The folder may be moved as a whole: paths are told from where the file lies.
  set(pkgConfig ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  cmake_path(SET toPrefix NORMALIZE "/prefix")
  cmake_path(RELATIVE_PATH toPrefix BASE_DIRECTORY "/prefix/${pkgConfig}")
  configure_file(cmake/install/emeg.pc.in ${CMAKE_BINARY_DIR}/emeg.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/emeg.pc DESTINATION ${pkgConfig} COMPONENT development)
  install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
endif()

if(EMEG_BUILD_PLUGIN)
  install(TARGETS EMEGArtifactPlugin LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/emeg/plugin
          COMPONENT plugin EXCLUDE_FROM_ALL)
endif()
