# The whole installed tree may be moved: the package files find it from where
# they lie themselves.
include(CMakePackageConfigHelpers)

install(TARGETS vek-ipmi EXPORT vek-ipmi-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/vek-ipmi DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vek-ipmi)
install(EXPORT vek-ipmi-targets NAMESPACE vek-ipmi::
  DESTINATION ${package_dir})
configure_package_config_file(
  cmake/vek-ipmi-config.cmake.in cmake/vek-ipmi-config.cmake
  INSTALL_DESTINATION ${package_dir}
  NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(cmake/vek-ipmi-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/cmake/vek-ipmi-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/cmake/vek-ipmi-config-version.cmake
  DESTINATION ${package_dir})

set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE ${pkgconfig_dir})
  set(pkgconfig_prefix ${CMAKE_INSTALL_PREFIX})
else()
  string(REGEX REPLACE "[^/]+" ".." up ${pkgconfig_dir})
  set(pkgconfig_prefix "\${pcfiledir}/${up}")
endif()
# An absolute folder stays what it is.
cmake_path(APPEND pkgconfig_libdir "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
cmake_path(APPEND pkgconfig_includedir "\${prefix}"
  ${CMAKE_INSTALL_INCLUDEDIR})
configure_file(cmake/vek-ipmi.pc.in cmake/vek-ipmi.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/cmake/vek-ipmi.pc
  DESTINATION ${pkgconfig_dir})

# The library reads its health table from this very path, whatever the prefix.
set(health_table /etc/sfcb/vek/sensor_health)
install(FILES packaging/sensor_health
  DESTINATION ${CMAKE_INSTALL_DATADIR}/vek-ipmi)
if(VEK_IPMI_INSTALL_HEALTH_TABLE)
  configure_file(cmake/InstallHealthTable.cmake.in
    cmake/InstallHealthTable.cmake @ONLY)
  install(SCRIPT ${CMAKE_CURRENT_BINARY_DIR}/cmake/InstallHealthTable.cmake)
endif()

find_program(SCDOC scdoc)
if(SCDOC)
  set(page ${CMAKE_CURRENT_SOURCE_DIR}/docs/man/sensor_health.5.scd)
  add_custom_command(OUTPUT sensor_health.5
    COMMAND sh -c "exec \"$0\" <\"$1\" >sensor_health.5" ${SCDOC} ${page}
    DEPENDS ${page} VERBATIM)
  add_custom_target(vek-ipmi-man ALL DEPENDS sensor_health.5)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/sensor_health.5
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man5)
else()
  message(STATUS "No scdoc: the manual pages are left out")
endif()
