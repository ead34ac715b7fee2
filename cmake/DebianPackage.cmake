# `cpack` in a build folder of the preset `package`: emeg (program, documentation), libemeg2 and libemeg-dev.

set(library libemeg${PROJECT_VERSION_MAJOR})
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The EMEG Artifact Plugin developers <developers@emeg.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL program documentation library development)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_SOURCE_DIR}/cmake/install/DebianFiles.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_COMPONENT_PROGRAM_GROUP program)
set(CPACK_COMPONENT_DOCUMENTATION_GROUP program)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME emeg)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION "removes MR artifacts from EEG
EEG that is recorded inside an MR scanner is buried under the artifacts of the
scanner's gradients and of the heart. emeg removes both; it needs neither a
trigger channel nor an ECG. It reads and writes BrainVision, EDF, BDF, EEGLAB
and CTC files, and simulates recordings with known artifacts.")

set(CPACK_COMPONENT_LIBRARY_GROUP library)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_SOURCE_DIR}/cmake/install/triggers)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "removes MR artifacts from EEG (library)
EEG that is recorded inside an MR scanner is buried under the artifacts of the
scanner's gradients and of the heart. This library removes both.")

set(CPACK_COMPONENT_DEVELOPMENT_GROUP development)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libemeg-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "removes MR artifacts from EEG (development files)
EEG that is recorded inside an MR scanner is buried under the artifacts of the
scanner's gradients and of the heart. These are the headers for C and C++ of
the library that removes both, with examples.")

set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
include(CPack)
