# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0

set(TAVO_MODULE_EXPORTS "${CMAKE_CURRENT_LIST_DIR}/tavo_module.map")

# tavo_add_module(<name> SOURCES <file>... [LIBRARIES <target>...] [NO_INSTALL])
#
# Builds the module libtavo_<name>.so, which exports only worker_create, in the folder where the host looks
# for modules, and installs it. Works in this tree and in projects that use find_package(tavo).
function(tavo_add_module name)
    cmake_parse_arguments(PARSE_ARGV 1 module "NO_INSTALL" "" "SOURCES;LIBRARIES")
    set(target tavo_${name})
    add_library(${target} MODULE ${module_SOURCES})
    target_link_libraries(${target} PRIVATE tavo::api ${module_LIBRARIES})
    set_target_properties(${target} PROPERTIES
        AUTOMOC ON
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/${TAVO_MODULE_DIR}"
        INSTALL_RPATH "$ORIGIN/../.."
        LINK_DEPENDS "${TAVO_MODULE_EXPORTS}")
    target_link_options(${target} PRIVATE "LINKER:--version-script=${TAVO_MODULE_EXPORTS}")
    if(NOT module_NO_INSTALL)
        install(TARGETS ${target} LIBRARY DESTINATION "${TAVO_MODULE_DIR}")
    endif()
endfunction()
