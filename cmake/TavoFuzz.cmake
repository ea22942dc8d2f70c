# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0

# tavo_add_fuzzer(<name> SOURCES <file>... [LIBRARIES <target>...] [MODULES <target>...]
#                 [MAX_LEN <bytes>] [DICTIONARY <file>])
#
# Builds the fuzzer fuzz/<name> and adds it to fuzz/list, which scripts/fuzz reads. Its seeds are in
# corpus/<name>. Each module is built first; the macro TAVO_<MODULE>_MODULE is the path of its file.
function(tavo_add_fuzzer name)
    cmake_parse_arguments(PARSE_ARGV 1 fuzzer "" "MAX_LEN;DICTIONARY" "SOURCES;LIBRARIES;MODULES")
    if(NOT fuzzer_MAX_LEN)
        set(fuzzer_MAX_LEN 4096)
    endif()
    set(dictionary "-")
    if(fuzzer_DICTIONARY)
        cmake_path(ABSOLUTE_PATH fuzzer_DICTIONARY OUTPUT_VARIABLE dictionary)
    endif()
    add_executable(${name} ${fuzzer_SOURCES})
    target_link_libraries(${name} PRIVATE fuzz_support ${fuzzer_LIBRARIES})
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/fuzz")
    foreach(module IN LISTS fuzzer_MODULES)
        string(TOUPPER "${module}_MODULE" macro)
        target_compile_definitions(${name} PRIVATE "${macro}=\"$<TARGET_FILE:${module}>\"")
        add_dependencies(${name} ${module})
    endforeach()
    add_dependencies(fuzzers ${name})
    set(corpus "${CMAKE_CURRENT_SOURCE_DIR}/corpus/${name}")
    set_property(GLOBAL APPEND PROPERTY TAVO_FUZZERS
        "${name} ${fuzzer_MAX_LEN} ${corpus} ${dictionary}\n")
endfunction()

# Writes fuzz/list. To be called after all fuzzers have been added.
function(tavo_write_fuzzer_list)
    get_property(lines GLOBAL PROPERTY TAVO_FUZZERS)
    list(JOIN lines "" text)
    file(WRITE "${CMAKE_BINARY_DIR}/fuzz/list" "${text}")
endfunction()
