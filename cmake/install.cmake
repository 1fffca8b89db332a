# What "cmake --install" puts where, so that C and C++ programs find it by pkg-config or CMake.
include(CMakePackageConfigHelpers)

install(TARGETS vel nolbconf vellog velmq diamond EXPORT vel LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/vel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT vel NAMESPACE vel:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vel FILE vel-config.cmake)
write_basic_package_version_file(vel-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vel-config-version.cmake DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vel)

# Relative to the file itself, so that the installed tree may stand anywhere.
file(RELATIVE_PATH vel_pc_to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" vel_pc_to_prefix ${vel_pc_to_prefix})
configure_file(cmake/vel.pc.in vel.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(VEL_TOOLS)
  install(TARGETS vel_command RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
