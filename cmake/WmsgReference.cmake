# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

# The reference of the classes, made by Doxygen from the public headers: `cmake --build ... --target reference`.

find_program(DOXYGEN doxygen)
find_program(DOT dot)
if(NOT DOXYGEN OR NOT DOT)
    message(STATUS "No reference: it wants doxygen and graphviz")
    return()
endif()

get_target_property(headers wmsg HEADER_SET)
get_target_property(contract_headers wmsg HEADER_SET_contracts)
list(APPEND headers ${contract_headers})
list(JOIN headers "\" \"" reference_input)
set(reference_input "\"${reference_input}\" \"${PROJECT_SOURCE_DIR}/docs/reference/mainpage.md\"")
set(reference_folder ${PROJECT_BINARY_DIR}/reference)
configure_file(${PROJECT_SOURCE_DIR}/docs/reference/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/reference/*)
add_custom_command(OUTPUT ${reference_folder}.made
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${reference_folder}
    COMMAND ${DOXYGEN} ${PROJECT_BINARY_DIR}/Doxyfile
    COMMAND ${CMAKE_COMMAND} -E touch ${reference_folder}.made
    DEPENDS ${headers} ${sources} ${PROJECT_BINARY_DIR}/Doxyfile
    COMMENT "Making the reference" VERBATIM)
add_custom_target(reference DEPENDS ${reference_folder}.made)
install(DIRECTORY ${reference_folder}/html DESTINATION ${CMAKE_INSTALL_DOCDIR}/reference
    COMPONENT reference EXCLUDE_FROM_ALL)
if(WMSG_DEVELOPER)
    # It builds by itself, while others may be building too.
    add_test(NAME reference
        COMMAND ${PROJECT_SOURCE_DIR}/tests/reference/reference.py ${PROJECT_BINARY_DIR})
    set_tests_properties(reference PROPERTIES ENVIRONMENT PYTHONDONTWRITEBYTECODE=1 TIMEOUT 300)
endif()
