# What "cmake --install" lays down, and the packages that cpack makes of it.

include(CMakePackageConfigHelpers)

install(TARGETS moxcore moxui quilloservices quillomoxui quillohostkit EXPORT quillomoxui-targets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT Headers)
install(TARGETS quillo-service quillo-host RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY quillomoxui/resources/strings DESTINATION ${CMAKE_INSTALL_DATADIR}/quillomoxui)
install(EXPORT quillomoxui-targets NAMESPACE quillo::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/quillomoxui)

configure_package_config_file(cmake/quillomoxui-config.cmake.in quillomoxui-config.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/quillomoxui)
write_basic_package_version_file(quillomoxui-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/quillomoxui-config.cmake"
              "${CMAKE_CURRENT_BINARY_DIR}/quillomoxui-config-version.cmake"
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/quillomoxui)
configure_file(cmake/quillomoxui.pc.in quillomoxui.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/quillomoxui.pc"
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quillomoxui)
set(CPACK_PACKAGE_CONTACT "The quillomoxui maintainers <maintainers@quillomoxui.invalid>")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_BINARY_DIR}/lib")
set(CPACK_DEBIAN_PACKAGE_DEPENDS ffmpeg)
include(CPack)
