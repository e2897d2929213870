# What makes a fault in a release build harder to use: the editor that loads the library reads what a service sends.
# Whatever the compiler's and linker's flags say already, as those of a packager do, stays as it is.

include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckPIESupported)

# A sanitizer replaces the functions that _FORTIFY_SOURCE checks, and finds more.
set(QUILLO_HARDEN ON)
if(QUILLO_SANITIZE OR NOT CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$")
  set(QUILLO_HARDEN OFF)
endif()

# quillo_harden_compile(FLAG PATTERN): compiles with FLAG where the compiler knows it, unless the flags so far have
# something that matches PATTERN.
function(quillo_harden_compile flag pattern)
  string(TOUPPER "${CMAKE_BUILD_TYPE}" type)
  if("${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${type}}" MATCHES "${pattern}")
    return()
  endif()
  string(MAKE_C_IDENTIFIER "QUILLO_HAS${flag}" known)
  check_cxx_compiler_flag("${flag}" ${known})
  if(${known})
    add_compile_options("${flag}")
  endif()
endfunction()

# quillo_harden_link(KEYWORD OPPOSITE): links with "-z KEYWORD" unless the flags so far ask for its opposite.
function(quillo_harden_link keyword opposite)
  if(NOT "${CMAKE_EXE_LINKER_FLAGS} ${CMAKE_SHARED_LINKER_FLAGS}" MATCHES "-z[ ,]*${opposite}")
    add_link_options("LINKER:-z,${keyword}")
  endif()
endfunction()

if(QUILLO_HARDEN)
  quillo_harden_compile(-fstack-protector-strong "-f(no-)?stack-protector")
  quillo_harden_compile(-fstack-clash-protection "-f(no-)?stack-clash-protection")
  quillo_harden_compile(-fcf-protection "-fcf-protection")  # x86 only

  # Some compilers define it by themselves.
  check_cxx_source_compiles("#ifndef _FORTIFY_SOURCE\n#error\n#endif\nint main() {}" QUILLO_FORTIFIED_ALREADY)
  if(NOT QUILLO_FORTIFIED_ALREADY)
    quillo_harden_compile(-D_FORTIFY_SOURCE=2 "-[DU] *_FORTIFY_SOURCE")
  endif()

  quillo_harden_link(relro norelro)
  quillo_harden_link(now lazy)

  # Has the linker make what the compiler compiles for: CMAKE_POSITION_INDEPENDENT_CODE is set.
  check_pie_supported(LANGUAGES CXX)
endif()
