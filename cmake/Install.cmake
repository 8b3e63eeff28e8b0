include(CMakePackageConfigHelpers)

install(TARGETS zanpx EXPORT ZanPXTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES include/zanpx.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT ZanPXTargets NAMESPACE ZanPX:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZanPX)

configure_package_config_file(cmake/ZanPXConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/ZanPXConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZanPX)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/ZanPXConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ZanPXConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/ZanPXConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZanPX)

# The pkg-config file finds the prefix from its own place, so an installed tree can move.
file(RELATIVE_PATH ZANPX_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/zanpx.pc.in ${CMAKE_CURRENT_BINARY_DIR}/zanpx.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zanpx.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
