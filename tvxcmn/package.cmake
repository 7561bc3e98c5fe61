# Install rules, the exported CMake package, the pkg-config file and the Debian packages. The components:
# runtime (the shared object and its messages), development (headers, archive, package files), crypto (the module over
# OpenSSL, when it is built), and tools (the command-line tools, which have their rules where they are made).

include(CMakePackageConfigHelpers)

set_target_properties(tvxcmn_api PROPERTIES EXPORT_NAME api)
set_target_properties(tvxcmn PROPERTIES EXPORT_NAME shared)

install(TARGETS tvxcmn EXPORT tvxcmnTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS tvxcmn_api tvxcmn_both EXPORT tvxcmnTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/inst/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tvxcmn
  COMPONENT development FILES_MATCHING PATTERN *.h)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tvxcmn)
install(EXPORT tvxcmnTargets NAMESPACE tvxcmn:: DESTINATION ${package_dir} COMPONENT development)
configure_package_config_file(tvxcmnConfig.cmake.in tvxcmnConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(tvxcmnConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tvxcmnConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/tvxcmnConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

# The .pc file finds its prefix from where it lies, so that an installed tree can be moved.
set(pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pc_to_prefix /prefix/${pc_dir} /prefix)
configure_file(tvxcmn.pc.in tvxcmn.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tvxcmn.pc DESTINATION ${pc_dir} COMPONENT development)

set(CPACK_COMPONENTS_ALL runtime development)
if(TARGET tvxssl)   # in a package of its own, because the library itself does without OpenSSL
  install(TARGETS tvxssl LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT crypto)
  list(APPEND CPACK_COMPONENTS_ALL crypto)
endif()

if(TVXCMN_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "tvxcmn maintainers <maintainers@tvxcmn.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libtvxcmn${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/triggers)   # runs ldconfig
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtvxcmn-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_CRYPTO_PACKAGE_NAME libtvxssl)
set(CPACK_DEBIAN_CRYPTO_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_CRYPTO_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME tvxcmn-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_CURRENT_BINARY_DIR})   # where the tools' library is
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "${PROJECT_DESCRIPTION}: command-line tools")
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
set(CPACK_COMPONENT_CRYPTO_DESCRIPTION "${PROJECT_DESCRIPTION}: cryptographic module")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION}: shared library")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "${PROJECT_DESCRIPTION}: headers and archive")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
include(CPack)
