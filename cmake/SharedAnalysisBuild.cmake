# How every target of the project is compiled, and the library itself.

# Vectors of 512 bits go to inlined functions alone: how they would be passed without AVX-512 (-Wpsabi) matters to nobody.
add_library(sa_warnings INTERFACE)
target_compile_options(sa_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wno-psabi -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  # Its -Wconversion takes in changes of sign, g++'s does not; both shall ask for the same.  A capture that one side of an
  # `if constexpr` reads counts as unused where the other is compiled.
  target_compile_options(sa_warnings INTERFACE -Wdocumentation -Wno-sign-conversion -Wno-unused-lambda-capture)
endif()

# Kernel numerics: no contraction, no reassociation; NaN tests, signed zeros and blends mean what they say.  Only the error
# number and the floating-point traps, which nobody reads, are given up.
add_library(sa_numerics INTERFACE)
target_compile_options(sa_numerics INTERFACE
  -ffp-contract=off -fno-math-errno -fno-trapping-math -fopenmp-simd)
target_include_directories(sa_numerics INTERFACE ${CMAKE_BINARY_DIR}/generated) # what is written from the headers

if(SA_SANITIZE)
  add_compile_options(-fsanitize=${SA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${SA_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # Checks in a loop may keep it from being vectorised; the generic tests call every kernel by a list of addresses; checks of
    # every address computed take two thirds of the compile time, and an access through a wrong one is found without them.
    add_compile_options(-Wno-pass-failed -fno-sanitize=function,pointer-overflow)
  else()
    add_compile_options(-Wno-maybe-uninitialized) # g++ 12 suspects its own <regex> when the checks are in
  endif()
endif()

file(GLOB_RECURSE SA_LIBRARY_SOURCES CONFIGURE_DEPENDS
  ${CMAKE_SOURCE_DIR}/glo/*.cpp ${CMAKE_SOURCE_DIR}/acd/*.cpp ${CMAKE_SOURCE_DIR}/spx/impl/*.cpp)
# What a user includes, and the parts that these include in turn, one a family.
file(GLOB SA_HEADERS CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/include/*.h)
file(GLOB SA_HEADER_PARTS CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/include/*/*.h)
# In a folder of their own: names like glo.h belong to nobody in one that all share.
set(SA_INSTALL_HEADERS ${CMAKE_INSTALL_INCLUDEDIR}/sharedanalysis)
set(SA_VERSION_SCRIPT ${CMAKE_BINARY_DIR}/SharedAnalysis.map)

# The library under a target name.  With ARCH the kernels are compiled for that one instruction set and nothing is chosen
# at load: the tests compare the bits of such builds.
function(sa_add_library target)
  cmake_parse_arguments(arg "" "ARCH" "" ${ARGN})
  add_library(${target} SHARED ${SA_LIBRARY_SOURCES})
  target_include_directories(${target}
    # the exported classes derive from classes of the host
    PUBLIC $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}/include> $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}/host/include>
           $<INSTALL_INTERFACE:${SA_INSTALL_HEADERS}> $<INSTALL_INTERFACE:${SA_INSTALL_HEADERS}/host>
    PRIVATE ${CMAKE_SOURCE_DIR})
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:sa_warnings> $<BUILD_INTERFACE:sa_numerics>)
  target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O3>)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Long bodies spend a quarter to a half of g++'s time in searches for common parts that find little.
    file(GLOB long ${CMAKE_SOURCE_DIR}/spx/impl/materials/*.cpp ${CMAKE_SOURCE_DIR}/glo/output/*.cpp)
    set_source_files_properties(${long} ${CMAKE_SOURCE_DIR}/spx/impl/elements/strain_output.cpp
      ${CMAKE_SOURCE_DIR}/spx/impl/tables/lookup.cpp PROPERTIES COMPILE_OPTIONS "-fno-gcse;-fno-gcse-after-reload")
    file(GLOB user ${CMAKE_SOURCE_DIR}/spx/impl/user/*.cpp)
    set_source_files_properties(${user} PROPERTIES COMPILE_OPTIONS "-fno-gcse;-fno-gcse-after-reload;-fno-tree-pre")
  endif()
  if(arg_ARCH)
    target_compile_options(${target} PRIVATE -march=${arg_ARCH} -mtune=generic)
  endif()
  if(SA_MULTIVERSION AND NOT arg_ARCH)
    target_compile_definitions(${target} PRIVATE SA_MULTIVERSION)
  endif()
  set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    LINK_DEPENDS ${SA_VERSION_SCRIPT})
  add_dependencies(${target} sa_version_script)
  # Host services are bound when they are first called: a host need not bring those that it never sees called.
  target_link_options(${target} PRIVATE -Wl,--version-script=${SA_VERSION_SCRIPT} -Wl,-z,lazy)
endfunction()

# The headers that all sources of the target include are compiled once for all of them, and for the targets made after it in
# the folder that take them over.
macro(sa_precompile target)
  target_precompile_headers(${target} PRIVATE ${ARGN})
  if(CMAKE_CXX_COMPILER_LAUNCHER MATCHES "ccache")
    # What was compiled with such a header is kept only on request.
    list(PREPEND CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros)
    set_target_properties(${target} PROPERTIES CXX_COMPILER_LAUNCHER "${CMAKE_CXX_COMPILER_LAUNCHER}")
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
      target_compile_options(${target} PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
    endif()
  endif()
endmacro()

# The first of the interpreters around that has these modules; empty where none has.
function(sa_find_python variable)
  find_package(Python3 COMPONENTS Interpreter)
  list(JOIN ARGN ", " modules)
  foreach(candidate ${Python3_EXECUTABLE} /usr/bin/python3)
    execute_process(COMMAND ${candidate} -c "import ${modules}" RESULT_VARIABLE status OUTPUT_QUIET ERROR_QUIET)
    if(status EQUAL 0)
      set(${variable} ${candidate} PARENT_SCOPE)
      return()
    endif()
  endforeach()
  set(${variable} "" PARENT_SCOPE)
endfunction()

# Writes the paths of all programs and shared libraries to built_files.txt, a line each, for the tests that look at them.
function(sa_list_built_files)
  set(files "")
  set(directories ${CMAKE_SOURCE_DIR})
  while(directories)
    list(POP_FRONT directories directory)
    get_property(below DIRECTORY ${directory} PROPERTY SUBDIRECTORIES)
    list(APPEND directories ${below})
    get_property(targets DIRECTORY ${directory} PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target ${targets})
      get_target_property(type ${target} TYPE)
      if(type MATCHES "^(EXECUTABLE|SHARED_LIBRARY|MODULE_LIBRARY)$")
        string(APPEND files "$<TARGET_FILE:${target}>\n")
      endif()
    endforeach()
  endwhile()
  file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/built_files.txt CONTENT "${files}")
endfunction()
