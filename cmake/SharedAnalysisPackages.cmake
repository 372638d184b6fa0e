# Debian packages, by components:  make packages.  What CPack does not do itself stands in packaging/debian/finish.cmake.
set(SA_MAINTAINER "SharedAnalysis developers <developers@sharedanalysis.example>" CACHE STRING "Maintainer of the packages")
set(SA_PACKAGING ${CMAKE_BINARY_DIR}/packaging) # control files that are made while packaging

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME sharedanalysis)
set(CPACK_PACKAGE_VENDOR SharedAnalysis)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_THREADS 0)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_SOURCE_DIR}/packaging/debian/finish.cmake)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${SA_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(SA_PACKAGE_VERSION ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})

# sa_package(COMPONENT NAME SECTION SUMMARY DESCRIPTION [ALL] [SHLIBDEPS] [SAME] [DEPENDS...] [RECOMMENDS...] [CONTROL file...])
set(CPACK_COMPONENTS_ALL "")
macro(sa_package component name section summary description)
  cmake_parse_arguments(arg "ALL;SHLIBDEPS;SAME" "" "DEPENDS;RECOMMENDS;CONTROL" ${ARGN})
  string(TOUPPER ${component} upper)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  list(JOIN arg_DEPENDS ", " depends)
  list(JOIN arg_RECOMMENDS ", " recommends)
  list(TRANSFORM arg_CONTROL PREPEND ${SA_PACKAGING}/${name}/)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n${description}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_RECOMMENDS "${recommends}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA "${arg_CONTROL}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_SHLIBDEPS ${arg_SHLIBDEPS})
  if(arg_ALL)
    set(CPACK_DEBIAN_${upper}_PACKAGE_ARCHITECTURE all)
  endif()
  if(arg_SAME)
    set(CPACK_DEBIAN_${upper}_PACKAGE_MULTIARCH same)
  endif()
endmacro()

set(same "(= ${SA_PACKAGE_VERSION})")
sa_package(library libsharedanalysis1 libs "kernels of finite-element structural analysis"
  "Block-vectorised numerical kernels that explicit and implicit finite-element\nsolvers load: element operators, materials, tensor algebra, gather and\nassembly, output, messages, diagnostics."
  SHLIBDEPS SAME CONTROL shlibs symbols triggers)
sa_package(dev libsharedanalysis-dev libdevel "kernels of structural analysis: headers, Fortran module"
  "Headers for C and C++, the Fortran module, CMake package, pkg-config files and\nmanual pages of all routines, for programs that use the library or its\nreference host."
  DEPENDS "libsharedanalysis1 ${same}" "libsharedanalysis-host1 ${same}" RECOMMENDS libsqlite3-dev)
if(TARGET SharedAnalysisHost)
  sa_package(host libsharedanalysis-host1 libs "kernels of structural analysis: reference host"
    "The services that the kernels expect of a host: message and status files,\ndiagnostics in an SQLite database, ranks. Several ranks need the transport in\nsharedanalysis-tools."
    SHLIBDEPS SAME CONTROL shlibs symbols triggers)
endif()
if(TARGET sharedanalysis-explicit)
  sa_package(tools sharedanalysis-tools science "explicit dynamics, material tests and diagnostics"
    "Programs around the kernels: an explicit-dynamics program for meshes of 8-node\nbricks, one for points of materials and their constants, comparison and reports\nof runs, diagnostics, and the transport of the reference host over MPI."
    SHLIBDEPS DEPENDS "libsharedanalysis1 ${same}" "libsharedanalysis-host1 ${same}" python3 RECOMMENDS python3-vtk9
    CONTROL triggers)
endif()
sa_package(python python3-sharedanalysis python "kernels of structural analysis from Python"
  "Every routine of the library as a function on NumPy arrays, checked against its\ndeclaration; messages of the library become warnings and exceptions."
  ALL DEPENDS python3 python3-numpy "libsharedanalysis1 (>= ${PROJECT_VERSION})" "libsharedanalysis-host1 (>= ${PROJECT_VERSION})"
  CONTROL postinst prerm)
if(TARGET docs)
  sa_package(doc sharedanalysis-doc doc "kernels of structural analysis: reference and examples"
    "The reference site with an entry for every routine, the manual, and examples in\nC++, Fortran and Python. It opens from disk." ALL)
endif()
# What finish.cmake needs to know.
set(CPACK_SA_VERSION ${SA_PACKAGE_VERSION})
set(CPACK_SA_LIBRARY_VERSION ${PROJECT_VERSION})
set(CPACK_SA_MAINTAINER "${SA_MAINTAINER}")
set(CPACK_SA_SOURCES ${CMAKE_SOURCE_DIR})
set(CPACK_SA_PACKAGING ${SA_PACKAGING})
include(CPack)
