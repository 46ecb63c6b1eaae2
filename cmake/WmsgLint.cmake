# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

# The checks of the source text, as tests: `ctest -L lint`.

find_package(Python3 REQUIRED COMPONENTS Interpreter)

# One test per script; more arguments are handed to it.
function(wmsg_lint name)
    add_test(NAME lint_${name}
        COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/cmake/check_${name}.py ${ARGN})
    set_tests_properties(lint_${name} PROPERTIES
        LABELS lint TIMEOUT 600 ENVIRONMENT PYTHONDONTWRITEBYTECODE=1)
endfunction()

wmsg_lint(debian)
wmsg_lint(format)
wmsg_lint(forwarding)
wmsg_lint(functions)
wmsg_lint(kept)
wmsg_lint(layers)
wmsg_lint(links)
wmsg_lint(spdx)
wmsg_lint(tidy ${PROJECT_BINARY_DIR})
wmsg_lint(words)
include(WmsgAbi)

# The analyser takes longest: it starts first, and takes the time of all processors that the other tests leave.
set_tests_properties(lint_tidy PROPERTIES TIMEOUT 3000 COST 1000)

add_test(NAME lint_test COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/cmake/lint_test.py)
set_tests_properties(lint_test PROPERTIES LABELS lint ENVIRONMENT PYTHONDONTWRITEBYTECODE=1)

# What is installed is whole: a project of its own finds it through CMake and through pkg-config.
add_test(NAME installed_package
    COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/tests/package/run.py
        ${PROJECT_BINARY_DIR} ${CMAKE_INSTALL_LIBDIR} ${CMAKE_CXX_COMPILER} "${CMAKE_CXX_FLAGS}")
set_tests_properties(installed_package PROPERTIES LABELS lint TIMEOUT 600 FIXTURES_SETUP installed)

# The examples are built against it and run. They have the sockets of the proxy daemon to themselves.
add_test(NAME examples_build
    COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/tests/package/examples.py build
        ${PROJECT_BINARY_DIR} ${CMAKE_INSTALL_LIBDIR} ${CMAKE_CXX_COMPILER} "${CMAKE_CXX_FLAGS}")
set_tests_properties(examples_build PROPERTIES
    TIMEOUT 600 FIXTURES_REQUIRED installed FIXTURES_SETUP examples_built)
add_test(NAME examples
    COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/tests/package/examples.py run
        ${PROJECT_BINARY_DIR} ${CMAKE_INSTALL_LIBDIR})
set_tests_properties(examples PROPERTIES
    TIMEOUT 600 FIXTURES_REQUIRED "installed;examples_built" RESOURCE_LOCK mmsproxy)
wmsg_shorten_pauses(examples)

# The Debian packages are built and tried in a bare root, with nothing of this build: scripts/test --packages.
option(WMSG_PACKAGES "Test the Debian packages" OFF)
if(WMSG_PACKAGES)
    add_test(NAME packages
        COMMAND ${PROJECT_SOURCE_DIR}/tests/package/debian.py ${PROJECT_BINARY_DIR}/packages)
    set_tests_properties(packages PROPERTIES
        LABELS packages TIMEOUT 7200 ENVIRONMENT PYTHONDONTWRITEBYTECODE=1)
endif()
