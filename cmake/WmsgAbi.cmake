# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

# What was built is compared with what former versions promised, and by `abi_lists` put into the lists of this one:
# docs/versioning.md.

# The debug information of this object tells the layouts of what the public headers declare.
set(abi_arguments)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_SIZEOF_VOID_P EQUAL 8)
    get_target_property(headers wmsg HEADER_SET)
    get_target_property(contracts wmsg HEADER_SET_contracts)
    set(abi_probe ${PROJECT_BINARY_DIR}/abi_probe.cpp)
    add_custom_command(OUTPUT ${abi_probe}
        COMMAND ${CMAKE_COMMAND} -E env PYTHONDONTWRITEBYTECODE=1
            $<TARGET_FILE:Python3::Interpreter> ${PROJECT_SOURCE_DIR}/cmake/abi_probe.py ${abi_probe}
        DEPENDS ${PROJECT_SOURCE_DIR}/cmake/abi_probe.py ${headers} ${contracts}
        VERBATIM)
    add_library(wmsg-abi-probe SHARED ${abi_probe})
    wmsg_compile_options(wmsg-abi-probe)
    set_target_properties(wmsg-abi-probe PROPERTIES AUTOMOC OFF)
    target_compile_options(wmsg-abi-probe PRIVATE
        -Wno-deprecated-declarations -g -gdwarf-5 -femit-class-debug-always -fno-eliminate-unused-debug-types
        -ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=.)
    target_link_libraries(wmsg-abi-probe PRIVATE wmsg)
    list(APPEND abi_arguments --probe $<TARGET_FILE:wmsg-abi-probe>)
endif()

# A phone's own library is not compared: WmsgInstall names ours.
list(TRANSFORM libraries REPLACE "(.+)" "$<TARGET_FILE:\\1>" OUTPUT_VARIABLE abi_libraries)
list(APPEND abi_arguments ${abi_libraries})

wmsg_lint(symbols ${abi_libraries})
wmsg_lint(abi ${abi_arguments})
set_tests_properties(lint_abi PROPERTIES SKIP_RETURN_CODE 77)

add_custom_target(abi_lists
    COMMAND ${CMAKE_COMMAND} -E env PYTHONDONTWRITEBYTECODE=1
        $<TARGET_FILE:Python3::Interpreter> ${PROJECT_SOURCE_DIR}/cmake/check_abi.py --update ${abi_arguments}
    VERBATIM)
