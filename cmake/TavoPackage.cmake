# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
#
# The package that find_package(tavo) finds, for authors of modules: the targets tavo::api and
# tavo::simpleplayer, and the function tavo_add_module().

include(CMakePackageConfigHelpers)
set(TAVO_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/tavo")

configure_package_config_file(cmake/tavoConfig.cmake.in "${CMAKE_BINARY_DIR}/tavoConfig.cmake"
    INSTALL_DESTINATION "${TAVO_PACKAGE_DIR}" PATH_VARS TAVO_MODULE_DIR)
write_basic_package_version_file("${CMAKE_BINARY_DIR}/tavoConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_BINARY_DIR}/tavoConfig.cmake" "${CMAKE_BINARY_DIR}/tavoConfigVersion.cmake"
              cmake/TavoModule.cmake cmake/tavo_module.map
        DESTINATION "${TAVO_PACKAGE_DIR}")
install(EXPORT tavo NAMESPACE tavo:: FILE tavoTargets.cmake DESTINATION "${TAVO_PACKAGE_DIR}")
