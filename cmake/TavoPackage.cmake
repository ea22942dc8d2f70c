# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
#
# The package that find_package(tavo) finds, for authors of modules: the targets tavo::api,
# tavo::simpleplayer and tavo::client, and the function tavo_add_module(). Its component "testing" has
# tavo::testing, tavo::testing_main and tavo_add_module_test().

include(CMakePackageConfigHelpers)
set(TAVO_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/tavo")

configure_package_config_file(cmake/tavoConfig.cmake.in "${CMAKE_BINARY_DIR}/tavoConfig.cmake"
    INSTALL_DESTINATION "${TAVO_PACKAGE_DIR}" PATH_VARS TAVO_MODULE_DIR)
write_basic_package_version_file("${CMAKE_BINARY_DIR}/tavoConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_BINARY_DIR}/tavoConfig.cmake" "${CMAKE_BINARY_DIR}/tavoConfigVersion.cmake"
              cmake/TavoModule.cmake cmake/tavo_module.map cmake/TavoModuleTest.cmake
        DESTINATION "${TAVO_PACKAGE_DIR}")
install(EXPORT tavo NAMESPACE tavo:: FILE tavoTargets.cmake DESTINATION "${TAVO_PACKAGE_DIR}")
install(EXPORT tavo-testing NAMESPACE tavo:: FILE tavoTestingTargets.cmake
        DESTINATION "${TAVO_PACKAGE_DIR}")

# The same libraries for pkg-config.
function(tavo_add_pkg_config name description requires)
    set(TAVO_PC_NAME ${name})
    # Relative to the file, so that the package can be installed anywhere.
    file(RELATIVE_PATH TAVO_PC_UP "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
    set(TAVO_PC_DESCRIPTION "${description}")
    set(TAVO_PC_REQUIRES "${requires}")
    list(JOIN ARGN " " TAVO_PC_CFLAGS)
    configure_file(cmake/tavo.pc.in "${CMAKE_BINARY_DIR}/tavo-${name}.pc" @ONLY)
    install(FILES "${CMAKE_BINARY_DIR}/tavo-${name}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endfunction()
tavo_add_pkg_config(api "The model of Tavo, for modules" "Qt5Core >= 5.15 log4cplus >= 2"
    -DQT_FORCE_ASSERTS)
tavo_add_pkg_config(simpleplayer "The players of Tavo" "Qt5Core >= 5.15")
tavo_add_pkg_config(client "The model of a running Tavo host, for other programs" "tavo-api")

# Man pages, made of the pages of the documentation.
find_package(Python3 COMPONENTS Interpreter)
if(Python3_FOUND)
    function(tavo_add_man_page name section description)
        set(output "${CMAKE_BINARY_DIR}/${name}.${section}")
        set(pages ${ARGN})
        list(TRANSFORM pages REPLACE "#.*" "")
        list(REMOVE_DUPLICATES pages)
        list(TRANSFORM pages PREPEND "${PROJECT_SOURCE_DIR}/docs/")
        add_custom_command(OUTPUT "${output}"
            COMMAND Python3::Interpreter "${PROJECT_SOURCE_DIR}/packaging/man-page" ${name} ${section}
                    ${PROJECT_VERSION} "${description}" ${ARGN} > "${output}"
            WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}/docs"
            DEPENDS "${PROJECT_SOURCE_DIR}/packaging/man-page" ${pages}
            VERBATIM)
        install(FILES "${output}" DESTINATION "${CMAKE_INSTALL_MANDIR}/man${section}")
        set_property(GLOBAL APPEND PROPERTY TAVO_MAN_PAGES "${output}")
    endfunction()
    tavo_add_man_page(tavo-host 1 "runs the modules that play and show notifications" host.md)
    tavo_add_man_page(tavo-host.json 5 "configuration of tavo-host and its modules"
        "host.md#Configuration" "services.md#Configuration of `powermanager`"
        "services.md#Configuration of `player`" "dbus.md#Configuration of `dbus`"
        "attention.md#Configuration of `attention`" "attention.md#Settings")
    tavo_add_man_page(tavo-fleet 1 "lets a fleet's controllers show and play on this device" fleet.md)
    if(TAVO_BUILD_DISPLAY)
        tavo_add_man_page(tavo-display 1 "shows the messages of tavo-host on the screen" display.md)
    endif()
else()
    message(STATUS "Python is missing: only the man page of tavo is made")
endif()
get_property(man_pages GLOBAL PROPERTY TAVO_MAN_PAGES)
add_custom_target(tavo_man_pages ALL DEPENDS ${man_pages})
