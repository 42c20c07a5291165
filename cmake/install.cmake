# Installs headers, both libraries, the CMake package and the pkg-config file.

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/datumfit")

install(DIRECTORY "${PROJECT_SOURCE_DIR}/datumfit"
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
    FILES_MATCHING PATTERN "*.h")

install(TARGETS datumfit_static datumfit_shared
    EXPORT datumfitTargets
    INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(EXPORT datumfitTargets NAMESPACE datumfit:: DESTINATION "${package_dir}")

configure_package_config_file(cmake/datumfitConfig.cmake.in "${PROJECT_BINARY_DIR}/datumfitConfig.cmake"
    INSTALL_DESTINATION "${package_dir}"
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/datumfitConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/datumfitConfig.cmake" "${PROJECT_BINARY_DIR}/datumfitConfigVersion.cmake"
    DESTINATION "${package_dir}")

# The pkg-config file finds the folders from its own place, so that the installation may be moved.
file(RELATIVE_PATH prefix_from_pkgconfig "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(cmake/datumfit.pc.in "${PROJECT_BINARY_DIR}/datumfit.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/datumfit.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
