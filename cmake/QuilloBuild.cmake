# How every target of this tree is built: the language, the warnings, the sanitizers, where results land.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# Lines for stack traces, and no more debug information than that: the builds are twice as quick for it.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -g0 -DNDEBUG")
if(QUILLO_SANITIZE)
  set(CMAKE_CXX_FLAGS_DEBUG "-O1 -g1")
endif()

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
                    -Wno-missing-field-initializers -Werror)
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

# quillo_shared_library(NAME sources...): a shared library with hidden visibility and a soname.
# NAME_API marks what it exports; the macro is defined in the library's Export.h.
function(quillo_shared_library name)
  add_library(${name} SHARED ${ARGN})
  # Threads, queued callbacks and what waits on the core library's pool run this code until the process ends: a host
  # that unloads its plug-in must not unload it.
  target_link_options(${name} PRIVATE LINKER:-z,nodelete)
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
endfunction()
