# Installation under the prefix (GNUInstallDirs layout), the CMake package
# (find_package(ediprot) -> ediprot::edi, ediprot::ediprot, ediprot::edihost), pkg-config
# files, and a Debian package through CPack (cpack -G DEB).
include(CMakePackageConfigHelpers)

set(EDIPROT_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/ediprot)

install(TARGETS ediprot edihost edilib EXPORT ediprotTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
                NAMELINK_COMPONENT development)
file(GLOB EDIPROT_PUBLIC_HEADERS CONFIGURE_DEPENDS
     ${CMAKE_CURRENT_SOURCE_DIR}/src/programs/ediprot.h
     ${CMAKE_CURRENT_SOURCE_DIR}/src/lib/edi.h
     ${CMAKE_CURRENT_SOURCE_DIR}/src/host/edihost*.h)
install(FILES ${EDIPROT_PUBLIC_HEADERS}
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ediprot COMPONENT development)
if(TARGET edi)
  install(TARGETS edi RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
endif()
install(FILES docs/edi.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)

# Data: the bundled configurations and the directory data, read by edi
# from the prefix it is installed in.
install(DIRECTORY configs/ DESTINATION ${CMAKE_INSTALL_DATADIR}/ediprot/configs
        COMPONENT runtime)
if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/data/directories)
  install(DIRECTORY data/directories/ DESTINATION ${CMAKE_INSTALL_DATADIR}/ediprot/directories
          COMPONENT runtime)
endif()
install(DIRECTORY samples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/samples COMPONENT runtime)
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime
        FILES_MATCHING PATTERN "*.md")
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)

# CMake package: the targets file computes its prefix from its own place,
# so an installed tree can be moved as a whole.
install(EXPORT ediprotTargets NAMESPACE ediprot:: DESTINATION ${EDIPROT_CMAKEDIR}
        COMPONENT development)
configure_package_config_file(cmake/ediprotConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/ediprotConfig.cmake INSTALL_DESTINATION ${EDIPROT_CMAKEDIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/ediprotConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ediprotConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/ediprotConfigVersion.cmake
        DESTINATION ${EDIPROT_CMAKEDIR} COMPONENT development)

# pkg-config files, relocatable: the prefix is taken from where the .pc
# file lies.
file(RELATIVE_PATH EDIPROT_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
     ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" EDIPROT_PC_TO_PREFIX "${EDIPROT_PC_TO_PREFIX}")
foreach(pc ediprot edihost edi)
  configure_file(cmake/${pc}.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${pc}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${pc}.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

# Debian package: everything in one package, /usr as prefix.
set(CPACK_PACKAGE_NAME ediprot)
set(CPACK_PACKAGE_VENDOR "ediprot developers")
set(CPACK_PACKAGE_CONTACT "ediprot developers <ediprot@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "UN/EDIFACT and VDA record files to and from data trees, with the edi command")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_CURRENT_BINARY_DIR})
set(CPACK_GENERATOR DEB)
include(CPack)
