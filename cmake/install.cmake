# What cmake --install puts where: bin/vorn, the libraries, the home directory VORN beside them (the rooms that make
# these install them), the headers, and what find_package(vorn) and pkg-config need. Nothing holds the prefix, so the
# whole tree can be moved.
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vorn)

install(TARGETS vorn EXPORT vornTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/vorn TYPE INCLUDE)

install(EXPORT vornTargets NAMESPACE vorn:: DESTINATION ${package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/vornConfig.cmake.in ${PROJECT_BINARY_DIR}/vornConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vornConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vornConfig.cmake ${PROJECT_BINARY_DIR}/vornConfigVersion.cmake
        DESTINATION ${package_dir})

file(RELATIVE_PATH prefix_from_pkgconfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${CMAKE_CURRENT_LIST_DIR}/vorn.pc.in ${PROJECT_BINARY_DIR}/vorn.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vorn.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
