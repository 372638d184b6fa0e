# What `cmake --install` leaves: headers, the libraries, a CMake package and pkg-config files, all relocatable.
include(CMakePackageConfigHelpers)

install(DIRECTORY ${CMAKE_SOURCE_DIR}/include/ DESTINATION ${SA_INSTALL_HEADERS} FILES_MATCHING PATTERN *.h)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/host/include/ DESTINATION ${SA_INSTALL_HEADERS}/host FILES_MATCHING PATTERN *.h)
install(FILES ${CMAKE_SOURCE_DIR}/host/tables/material_table.h DESTINATION ${SA_INSTALL_HEADERS}/host)
install(DIRECTORY ${SA_MANUAL}/man3 DESTINATION ${CMAKE_INSTALL_MANDIR})

set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/SharedAnalysis)
# The prefix of a pkg-config file is the file's own place, so that an installed tree may move.
file(RELATIVE_PATH SA_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" SA_PC_PREFIX ${SA_PC_PREFIX})

# sa_install_library(TARGET PC): the library, its part in the package, its pkg-config file.
function(sa_install_library target pc)
  install(TARGETS ${target} EXPORT SharedAnalysisTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  configure_file(${CMAKE_SOURCE_DIR}/cmake/${pc}.pc.in ${CMAKE_BINARY_DIR}/${pc}.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/${pc}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

sa_install_library(SharedAnalysis sharedanalysis)
# The reference host comes along for programs that bring no host of their own.
if(TARGET SharedAnalysisHost)
  sa_install_library(SharedAnalysisHost sharedanalysis-host)
  install(FILES ${CMAKE_SOURCE_DIR}/host/reference/reference_host.h
    ${CMAKE_SOURCE_DIR}/host/reference/reference_host_c.h ${CMAKE_SOURCE_DIR}/host/reference/diagnostic_codes.h
    DESTINATION ${SA_INSTALL_HEADERS}/host)
endif()
# Loaded before the library by whoever wants its calls checked or recorded.
install(TARGETS SharedAnalysisChecked EXPORT SharedAnalysisTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
# A module file serves one compiler; the source stands beside it for others.
if(TARGET SharedAnalysisFortran)
  install(TARGETS SharedAnalysisFortran EXPORT SharedAnalysisTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(FILES ${SA_FORTRAN_FILES} DESTINATION ${SA_INSTALL_HEADERS}/fortran)
  configure_file(${CMAKE_SOURCE_DIR}/cmake/sharedanalysis-fortran.pc.in ${CMAKE_BINARY_DIR}/sharedanalysis-fortran.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/sharedanalysis-fortran.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()

install(EXPORT SharedAnalysisTargets NAMESPACE SharedAnalysis:: DESTINATION ${packageDir})
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/SharedAnalysisConfig.cmake.in
  ${CMAKE_BINARY_DIR}/SharedAnalysisConfig.cmake INSTALL_DESTINATION ${packageDir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/SharedAnalysisConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/SharedAnalysisConfig.cmake ${CMAKE_BINARY_DIR}/SharedAnalysisConfigVersion.cmake
  DESTINATION ${packageDir})
