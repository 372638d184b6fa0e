# What `cmake --install` leaves: headers, the libraries, a CMake package and pkg-config files, all relocatable.
include(CMakePackageConfigHelpers)

install(DIRECTORY ${CMAKE_SOURCE_DIR}/include/ DESTINATION ${SA_INSTALL_HEADERS} COMPONENT dev FILES_MATCHING PATTERN *.h)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/host/include/ DESTINATION ${SA_INSTALL_HEADERS}/host COMPONENT dev FILES_MATCHING PATTERN *.h)
install(FILES ${CMAKE_SOURCE_DIR}/host/tables/material_table.h DESTINATION ${SA_INSTALL_HEADERS}/host COMPONENT dev)
install(DIRECTORY ${SA_MANUAL}/man3 DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT dev)

set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/SharedAnalysis)
# The prefix of a pkg-config file is the file's own place, so that an installed tree may move.
file(RELATIVE_PATH SA_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" SA_PC_PREFIX ${SA_PC_PREFIX})

# sa_install_library(TARGET PC COMPONENT): the library, its part in the package, its pkg-config file.
function(sa_install_library target pc component)
  install(TARGETS ${target} EXPORT SharedAnalysisTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component} NAMELINK_COMPONENT dev)
  configure_file(${CMAKE_SOURCE_DIR}/cmake/${pc}.pc.in ${CMAKE_BINARY_DIR}/${pc}.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/${pc}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
endfunction()

sa_install_library(SharedAnalysis sharedanalysis library)
# As distributions do it: the loader takes the library from the folder of the best instruction set that the machine has.  The
# bits are the same; calls are spared the choice between clones, and every routine has the wide vectors.
if(SA_HWCAPS)
  foreach(level x86-64-v3 x86-64-v4)
    set(target SharedAnalysis_hwcaps_${level})
    sa_add_library(${target} ARCH ${level})
    set_target_properties(${target} PROPERTIES OUTPUT_NAME SharedAnalysis VERSION ${PROJECT_VERSION}
      SOVERSION ${PROJECT_VERSION_MAJOR} LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib/glibc-hwcaps/${level})
    install(TARGETS ${target} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/glibc-hwcaps/${level}
      COMPONENT library NAMELINK_SKIP)
    add_dependencies(programs ${target})
  endforeach()
endif()
# The reference host comes along for programs that bring no host of their own.
if(TARGET SharedAnalysisHost)
  sa_install_library(SharedAnalysisHost sharedanalysis-host host)
  install(FILES ${CMAKE_SOURCE_DIR}/host/reference/reference_host.h
    ${CMAKE_SOURCE_DIR}/host/reference/reference_host_c.h ${CMAKE_SOURCE_DIR}/host/reference/diagnostic_codes.h
    DESTINATION ${SA_INSTALL_HEADERS}/host COMPONENT dev)
endif()
# Loaded before the library by whoever wants its calls checked or recorded.
install(TARGETS SharedAnalysisChecked EXPORT SharedAnalysisTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
# A module file serves one compiler; the source stands beside it for others.
if(TARGET SharedAnalysisFortran)
  install(TARGETS SharedAnalysisFortran EXPORT SharedAnalysisTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
  install(FILES ${SA_FORTRAN_FILES} DESTINATION ${SA_INSTALL_HEADERS}/fortran COMPONENT dev)
  configure_file(${CMAKE_SOURCE_DIR}/cmake/sharedanalysis-fortran.pc.in ${CMAKE_BINARY_DIR}/sharedanalysis-fortran.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/sharedanalysis-fortran.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
endif()

install(EXPORT SharedAnalysisTargets NAMESPACE SharedAnalysis:: DESTINATION ${packageDir} COMPONENT dev)
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/SharedAnalysisConfig.cmake.in
  ${CMAKE_BINARY_DIR}/SharedAnalysisConfig.cmake INSTALL_DESTINATION ${packageDir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/SharedAnalysisConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/SharedAnalysisConfig.cmake ${CMAKE_BINARY_DIR}/SharedAnalysisConfigVersion.cmake
  DESTINATION ${packageDir} COMPONENT dev)
