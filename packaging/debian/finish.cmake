# Run by CPack when all files are in place, a folder a component, and before the packages are made of them: manual pages are
# compressed, each package gets its copyright and changelog, programs lose the search paths that serve an installation in any
# place, and the control files of libraries and of the Python package are written.
cmake_policy(VERSION 3.25)

function(sa_run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(MAKE_DIRECTORY ${CPACK_SA_PACKAGING})
set(copyright ${CPACK_SA_SOURCES}/packaging/debian/copyright)
set(changelog ${CPACK_SA_PACKAGING}/changelog.Debian)
# The day of the package is that of the sources' last change.
execute_process(COMMAND git -C ${CPACK_SA_SOURCES} log -1 --format=%cD OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
if(NOT date)
  execute_process(COMMAND date -R OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE)
endif()
file(WRITE ${changelog} "sharedanalysis (${CPACK_SA_VERSION}) unstable; urgency=medium\n\n"
  "  * Version ${CPACK_SA_LIBRARY_VERSION}; the changes stand in CHANGELOG.md of the sources.\n\n"
  " -- ${CPACK_SA_MAINTAINER}  ${date}\n")

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(root ${CPACK_TEMPORARY_DIRECTORY}/${component})
  set(control ${CPACK_SA_PACKAGING}/${package})
  file(MAKE_DIRECTORY ${control} ${root}/usr/share/doc/${package})

  file(GLOB_RECURSE pages ${root}/usr/share/man/*.[13])
  if(pages)
    sa_run(gzip -9nf ${pages})
  endif()
  file(COPY ${copyright} DESTINATION ${root}/usr/share/doc/${package} FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  set(packed ${root}/usr/share/doc/${package}/changelog.Debian.gz)
  execute_process(COMMAND gzip -9nc ${changelog} OUTPUT_FILE ${packed} COMMAND_ERROR_IS_FATAL ANY)
  file(CHMOD ${packed} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

  file(GLOB_RECURSE files ${root}/usr/bin/* ${root}/usr/lib/*.so*)
  foreach(file IN LISTS files)
    if(IS_SYMLINK ${file})
      continue()
    endif()
    file(READ ${file} magic LIMIT 4 HEX)
    if(magic STREQUAL 7f454c46)
      file(RPATH_REMOVE FILE ${file})
    endif()
    if(file MATCHES "\\.so(\\.|$)")
      file(CHMOD ${file} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ) # libraries are not executable
    endif()
  endforeach()

  file(WRITE ${control}/triggers "activate-noawait ldconfig\n")
  file(CHMOD ${control}/triggers PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  if(package MATCHES "^lib.*1$")
    file(GLOB libraries ${root}/usr/lib/*/lib*.so.1 ${root}/usr/lib/lib*.so.1)
    list(GET libraries 0 library)
    get_filename_component(name ${library} NAME)
    string(REGEX REPLACE "\\.so\\.1$" "" name ${name})
    file(WRITE ${control}/shlibs "${name} 1 ${package} (>= ${CPACK_SA_LIBRARY_VERSION})\n")
    file(WRITE ${control}/debian/control "Source: sharedanalysis\n\nPackage: ${package}\nArchitecture: any\n")
    execute_process(COMMAND dpkg-gensymbols -q -p${package} -v${CPACK_SA_LIBRARY_VERSION} -e${library} -O${control}/symbols
      WORKING_DIRECTORY ${control} COMMAND_ERROR_IS_FATAL ANY)
    set(written shlibs symbols)
  elseif(component STREQUAL python)
    file(WRITE ${control}/postinst "#!/bin/sh\nset -e\nif [ \"$1\" = configure ] && command -v py3compile >/dev/null; then py3compile -p ${package}; fi\n")
    file(WRITE ${control}/prerm "#!/bin/sh\nset -e\nif command -v py3clean >/dev/null; then py3clean -p ${package}; fi\n")
    set(written "")
    file(CHMOD ${control}/postinst ${control}/prerm PERMISSIONS
      OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
  else()
    set(written "")
  endif()
  foreach(file IN LISTS written)
    file(CHMOD ${control}/${file} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  endforeach()
endforeach()
