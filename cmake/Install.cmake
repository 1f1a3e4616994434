# What a host that links the library needs: the two shared libraries, the headers, and package
# configuration for CMake and for pkg-config.
include(CMakePackageConfigHelpers)

install(EXPORT linkflapTargets NAMESPACE LinkFlap::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/linkflap)
configure_package_config_file(cmake/linkflapConfig.cmake.in
                              ${CMAKE_CURRENT_BINARY_DIR}/linkflapConfig.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/linkflap)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/linkflapConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/linkflapConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/linkflapConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/linkflap)

# Relative, so that the installed tree can be moved.
file(RELATIVE_PATH LINKFLAP_PC_TO_PREFIX
     /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/linkflap.pc.in ${CMAKE_CURRENT_BINARY_DIR}/linkflap.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/linkflap.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
