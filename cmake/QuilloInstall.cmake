# What "cmake --install" lays down. It may be moved as a whole afterwards. scripts/package makes Debian's packages of it.

include(CMakePackageConfigHelpers)

set(QUILLO_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/quillomoxui")

# quillo_install_component(NAME TARGETS ... [COMPONENTS ...] [PACKAGES ...] [PC_REQUIRES ...])
#
# Installs shared libraries as the component NAME of the CMake package quillomoxui, and in a .pc file with the name of the
# first. TARGETS come in the order in which a linker takes them. What the component stands on: COMPONENTS of this package, PACKAGES as find_package
# takes them ("Qt6 COMPONENTS Widgets"), PC_REQUIRES as pkg-config takes them.
function(quillo_install_component name)
  cmake_parse_arguments(ARG "" "" "TARGETS;COMPONENTS;PACKAGES;PC_REQUIRES" ${ARGN})
  install(
    TARGETS ${ARG_TARGETS}
    EXPORT quillomoxui-targets-${name}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Libraries NAMELINK_COMPONENT Development
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT Headers)
  install(EXPORT quillomoxui-targets-${name} NAMESPACE quillo:: DESTINATION ${QUILLO_PACKAGE_DIR} COMPONENT Development)

  set(needs "")
  foreach(component ${ARG_COMPONENTS})
    string(APPEND needs "include(\"\${CMAKE_CURRENT_LIST_DIR}/quillomoxui-component-${component}.cmake\")\n")
  endforeach()
  foreach(package ${ARG_PACKAGES})
    string(APPEND needs "find_dependency(${package})\n")
  endforeach()
  set(component "${CMAKE_CURRENT_BINARY_DIR}/quillomoxui-component-${name}.cmake")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/component.cmake.in" "${component}" @ONLY)
  install(FILES "${component}" DESTINATION ${QUILLO_PACKAGE_DIR} COMPONENT Development)

  # Where the file is says where the rest is, unless the packager has fixed the place of the libraries.
  set(prefix "${CMAKE_INSTALL_PREFIX}")
  if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    file(RELATIVE_PATH up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
    string(REGEX REPLACE "/$" "" up "${up}")
    set(prefix "\${pcfiledir}/${up}")
  endif()
  cmake_path(APPEND libdir "\${prefix}" "${CMAKE_INSTALL_LIBDIR}")
  cmake_path(APPEND includedir "\${prefix}" "${CMAKE_INSTALL_INCLUDEDIR}")
  list(GET ARG_TARGETS 0 pc)
  list(TRANSFORM ARG_TARGETS PREPEND "-l" OUTPUT_VARIABLE libs)
  list(JOIN libs " " libs)
  set(requires ${ARG_COMPONENTS} ${ARG_PC_REQUIRES})
  list(JOIN requires ", " requires)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/component.pc.in" ${pc}.pc @ONLY)
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${pc}.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
          COMPONENT Development)
endfunction()

quillo_install_component(
  quillomoxui
  TARGETS quillomoxui moxui quilloservices moxcore
  PACKAGES Threads Boost "Qt6 COMPONENTS Widgets"
  PC_REQUIRES Qt6Widgets)
if(TARGET quillohostkit)
  quillo_install_component(hostkit TARGETS quillohostkit COMPONENTS quillomoxui PACKAGES "Qt6 COMPONENTS Widgets"
                           PC_REQUIRES Qt6Widgets)
endif()

configure_package_config_file(cmake/quillomoxui-config.cmake.in quillomoxui-config.cmake
                              INSTALL_DESTINATION ${QUILLO_PACKAGE_DIR})
write_basic_package_version_file(quillomoxui-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/quillomoxui-config.cmake"
              "${CMAKE_CURRENT_BINARY_DIR}/quillomoxui-config-version.cmake"
        DESTINATION ${QUILLO_PACKAGE_DIR} COMPONENT Development)

# quillo_install_program(TARGET COMPONENT): a program with its manual page and its completion in bash.
function(quillo_install_program target component)
  install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component})
  install(FILES packaging/man/${target}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component})
  install(FILES packaging/completion/${target} DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
          COMPONENT ${component})
endfunction()

if(QUILLO_PROGRAMS)
  quillo_install_program(quillo-host Host)
  install(FILES packaging/desktop/quillo-host.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT Host)
  install(FILES packaging/desktop/quillo-host.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps
          COMPONENT Host)

  quillo_install_program(quillo-service Service)
  # A unit names its program with the whole path, which is known for certain when the program is installed.
  set(unit packaging/systemd/quillo-service.service)
  install(
    CODE "set(bindir \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
configure_file(\"${PROJECT_SOURCE_DIR}/${unit}.in\" \"${PROJECT_BINARY_DIR}/${unit}\" @ONLY)"
    COMPONENT Service)
  install(FILES "${PROJECT_BINARY_DIR}/${unit}" DESTINATION lib/systemd/user COMPONENT Service)
endif()
