# What lies under a prefix: programs, both libraries with their headers, the plug-ins (their own
# folders install them), and the packages for CMake and pkg-config. A prefix may be moved.
include(CMakePackageConfigHelpers)

install(TARGETS framework_service reference_host EXPORT framework_service_targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS cluster_service RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/inc/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILES_MATCHING PATTERN "*.h")

set(PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/framework_service)
install(EXPORT framework_service_targets NAMESPACE framework_service:: DESTINATION ${PACKAGE_DIR})
configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/framework_service-config.cmake.in
    ${PROJECT_BINARY_DIR}/package/framework_service-config.cmake
    INSTALL_DESTINATION ${PACKAGE_DIR})
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/package/framework_service-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/package/framework_service-config.cmake
    ${PROJECT_BINARY_DIR}/package/framework_service-config-version.cmake
    DESTINATION ${PACKAGE_DIR})

function(install_pkg_config PC_NAME PC_DESCRIPTION PC_REQUIRES)
    file(RELATIVE_PATH PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
    string(REGEX REPLACE "/$" "" PC_PREFIX ${PC_PREFIX})
    configure_file(
        ${PROJECT_SOURCE_DIR}/cmake/library.pc.in
        ${PROJECT_BINARY_DIR}/package/${PC_NAME}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/package/${PC_NAME}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

install_pkg_config(framework_service
    "Cluster model, registries and plug-in framework; a host supplies the rest" "ACE jsoncpp")
install_pkg_config(reference_host "A host for framework_service" "ACE jsoncpp")
