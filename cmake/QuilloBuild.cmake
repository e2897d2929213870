# How every target of this tree is built: the language, the warnings, the sanitizers, where results land.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR};$ORIGIN")

find_program(QUILLO_CCACHE ccache)
if(QUILLO_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${QUILLO_CCACHE}")
endif()

# Qt is built without the thread sanitizer, which would report it: what stands on Qt is left out of that build.
if(QUILLO_SANITIZE MATCHES "thread")
  set(QUILLO_VIEWS OFF)
else()
  set(QUILLO_VIEWS ON)
endif()

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
# Both ends of an upload use it, and it comes without a CMake package.
pkg_check_modules(XXHASH REQUIRED IMPORTED_TARGET GLOBAL libxxhash)

# What only GCC knows of.
set(QUILLO_GCC "$<CXX_COMPILER_ID:GNU>")

add_compile_options(-Wall -Wextra -Wpedantic $<${QUILLO_GCC}:-Wshadow=local> -Wnon-virtual-dtor -Woverloaded-virtual
                    -Wno-missing-field-initializers)
if(QUILLO_WERROR)
  add_compile_options(-Werror)
endif()
# GCC 12 misreads std::make_shared of a class with a virtual base as reaching past the object.
add_compile_options($<${QUILLO_GCC}:-Wno-array-bounds>)
if(QUILLO_SANITIZE)
  # The headers under test are our own; a sanitizer makes GCC's flow analysis see paths that cannot be.
  add_compile_options(-fsanitize=${QUILLO_SANITIZE} -fno-omit-frame-pointer
                      $<${QUILLO_GCC}:-Wno-maybe-uninitialized>)
  add_link_options(-fsanitize=${QUILLO_SANITIZE})
  if(QUILLO_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
  if(QUILLO_SANITIZE MATCHES "thread")
    # GCC warns that it cannot follow fences; none of our code uses them.
    add_compile_options($<${QUILLO_GCC}:-Wno-tsan>)
  endif()
endif()

if(QUILLO_FUZZ)
  # Counts what runs; the fuzzer itself, with its main function, is linked to the targets alone.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

include(QuilloHarden)

# quillo_library(NAME NAMESPACES ... [TEMPLATES ...] PUBLIC_HEADERS ... SOURCES ... BELOW ... PUBLIC ... PRIVATE ...)
#
# Compiles the sources once, as NAME_objects, and makes of them
#   NAME            the shared library with a soname, which a host loads. It exports what NAME_API marks (Export.h) in the
#                   NAMESPACES, and no templates that it instantiates except those that match TEMPLATES.
#   NAME_internals  a static library for tests, benchmarks and developers' programs, which reach everything.
# PUBLIC_HEADERS are installed; docs/public-api.md says what is promised of them. BELOW names libraries of this tree, which either of them stands on in its own form: a program links one form only, or
# it would have two copies of each static. PUBLIC and PRIVATE name libraries of others.
function(quillo_library name)
  cmake_parse_arguments(ARG "" "" "NAMESPACES;TEMPLATES;PUBLIC_HEADERS;SOURCES;BELOW;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name}_objects OBJECT ${ARG_SOURCES})
  target_link_libraries(${name}_objects PRIVATE ${ARG_BELOW} ${ARG_PUBLIC} ${ARG_PRIVATE})

  set(globals "")
  foreach(namespace ${ARG_NAMESPACES})
    foreach(kind "" "typeinfo?for?" "typeinfo?name?for?" "vtable?for?" "VTT?for?")
      string(APPEND globals "      ${kind}${namespace}::*;\n")
    endforeach()
    string(APPEND globals "      construction?vtable?for?*${namespace}::*;\n      *thunk?to?${namespace}::*;\n")
  endforeach()
  foreach(template ${ARG_TEMPLATES})
    string(APPEND globals "      ${template};\n")
  endforeach()
  set(script "${CMAKE_CURRENT_BINARY_DIR}/${name}.map")
  file(CONFIGURE OUTPUT "${script}" @ONLY
       CONTENT "{\n  global:\n    extern \"C++\" {\n@globals@    };\n  local: *;\n};\n")

  add_library(${name} SHARED $<TARGET_OBJECTS:${name}_objects>)
  target_link_libraries(${name} PUBLIC ${ARG_BELOW} ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
  # Threads, queued callbacks and what waits on the core library's pool run this code until the process ends: a host
  # that unloads its plug-in must not unload it.
  target_link_options(${name} PRIVATE LINKER:-z,nodelete "LINKER:--version-script=${script}")
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
                                           LINKER_LANGUAGE CXX LINK_DEPENDS "${script}")

  # The folder that includes are written from.
  cmake_path(GET CMAKE_CURRENT_SOURCE_DIR PARENT_PATH base)
  target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS "${base}" FILES ${ARG_PUBLIC_HEADERS})

  # By the name under which the installed package has it.
  add_library(quillo::${name} ALIAS ${name})

  add_library(${name}_internals STATIC EXCLUDE_FROM_ALL $<TARGET_OBJECTS:${name}_objects>)
  set_target_properties(${name}_internals PROPERTIES LINKER_LANGUAGE CXX)
  set(below ${ARG_BELOW})
  list(TRANSFORM below APPEND _internals)
  target_link_libraries(${name}_internals PUBLIC ${below} ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})

  foreach(form ${name}_objects ${name} ${name}_internals)
    target_include_directories(${form} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                                              $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/platform>)
    target_compile_features(${form} PUBLIC cxx_std_20)
    set_target_properties(${form} PROPERTIES QUILLO_LIBRARY ON)
  endforeach()
endfunction()
