# What `cmake --install` leaves: headers, the library, a CMake package and a pkg-config file, all relocatable.
include(CMakePackageConfigHelpers)

# The reference host comes along for programs that bring no host of their own.
install(TARGETS SharedAnalysis SharedAnalysisHost EXPORT SharedAnalysisTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${SA_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/SharedAnalysis)
install(EXPORT SharedAnalysisTargets NAMESPACE SharedAnalysis:: DESTINATION ${packageDir})
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/SharedAnalysisConfig.cmake.in
  ${CMAKE_BINARY_DIR}/SharedAnalysisConfig.cmake INSTALL_DESTINATION ${packageDir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/SharedAnalysisConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/SharedAnalysisConfig.cmake ${CMAKE_BINARY_DIR}/SharedAnalysisConfigVersion.cmake
  DESTINATION ${packageDir})

install(DIRECTORY ${CMAKE_SOURCE_DIR}/host/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/sharedanalysis/host
  FILES_MATCHING PATTERN *.h)
install(FILES ${CMAKE_SOURCE_DIR}/host/reference/reference_host.h ${CMAKE_SOURCE_DIR}/host/tables/material_table.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/sharedanalysis/host)

# The prefix is the file's own place, so that an installed tree may move.
file(RELATIVE_PATH SA_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" SA_PC_PREFIX ${SA_PC_PREFIX})
configure_file(${CMAKE_SOURCE_DIR}/cmake/sharedanalysis.pc.in ${CMAKE_BINARY_DIR}/sharedanalysis.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/sharedanalysis.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
