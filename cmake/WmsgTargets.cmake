# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

# How every target of the project is compiled, and the helpers that declare them.

include(CheckLinkerFlag)
include(GenerateExportHeader)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "The kind of build" FORCE)
endif()

# An installed tree works wherever it is moved to.
set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

# The many small test programs are linked in no time by mold; any linker does.
if(WMSG_DEVELOPER)
    set(CMAKE_VERIFY_INTERFACE_HEADER_SETS ON)
    check_linker_flag(CXX -fuse-ld=mold WMSG_HAVE_MOLD)
    if(WMSG_HAVE_MOLD)
        add_link_options(-fuse-ld=mold)
    endif()
endif()

# Options for our own sources alone; nothing of this reaches a consumer.
function(wmsg_compile_options target)
    set_target_properties(${target} PROPERTIES
        CXX_STANDARD 17
        CXX_STANDARD_REQUIRED ON
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        AUTOMOC ON)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wshadow)
    # Our own exported functions are not meant to be replaced from outside, so calls among them stay direct.
    # The platform services are: they are libraries of their own.
    target_compile_options(${target} PRIVATE -fno-semantic-interposition)
    if(WMSG_DEVELOPER)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    if(ECM_ENABLE_SANITIZERS)
        target_compile_options(${target} PRIVATE -fno-sanitize-recover=all)
    endif()
endfunction()

# Library and program code spells conversions and signals out; tests are free of that.
function(wmsg_strict_qt target)
    target_compile_definitions(${target} PRIVATE
        QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS)
endfunction()

# The SDK library; the folders add their sources with target_sources() and wmsg_public_headers().
function(wmsg_add_sdk_library)
    add_library(wmsg SHARED)
    add_library(wmsg::wmsg ALIAS wmsg)
    set_target_properties(wmsg PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 1)
    wmsg_compile_options(wmsg)
    wmsg_strict_qt(wmsg)
    generate_export_header(wmsg BASE_NAME wmsg
        EXPORT_FILE_NAME ${PROJECT_BINARY_DIR}/include/wmsg_export.h)
    target_sources(wmsg PUBLIC FILE_SET generated TYPE HEADERS
        BASE_DIRS ${PROJECT_BINARY_DIR}/include
        FILES ${PROJECT_BINARY_DIR}/include/wmsg_export.h)
    target_include_directories(wmsg INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/wmsg>)
    target_link_libraries(wmsg
        PUBLIC Qt6::Core Qt6::Network wmsg::system wmsg::engine
        PRIVATE wmsg::drmclient wmsg::mimetype wmsg::telephony)
endfunction()

# Headers of the current folder that are installed.
function(wmsg_public_headers)
    list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    target_sources(wmsg PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${ARGN})
endfunction()

# Reading the Qt headers is most of the time that a test takes to compile: all tests share one compiled
# copy. A compiler cache wins more, and cannot see through precompiled headers.
function(wmsg_share_test_headers target)
    if(CMAKE_CXX_COMPILER_LAUNCHER)
        return()
    endif()
    # Qt hands each test its own folder as a macro; a shared copy wants the same macros everywhere.
    set(same_macros -UQT_TESTCASE_BUILDDIR -UQT_TESTCASE_SOURCEDIR)
    target_compile_options(${target} PRIVATE ${same_macros})
    if(NOT TARGET wmsg-test-headers)
        file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/test_headers.cpp CONTENT "// Holds nothing.\n")
        add_library(wmsg-test-headers OBJECT ${PROJECT_BINARY_DIR}/test_headers.cpp)
        wmsg_compile_options(wmsg-test-headers)
        target_compile_options(wmsg-test-headers PRIVATE ${same_macros})
        set_target_properties(wmsg-test-headers PROPERTIES AUTOMOC OFF)
        target_link_libraries(wmsg-test-headers PRIVATE Qt6::Test Qt6::Network)
        target_precompile_headers(wmsg-test-headers PRIVATE <QtTest/QtTest>)
    endif()
    target_precompile_headers(${target} REUSE_FROM wmsg-test-headers)
endfunction()

# One test program per source; its name is the source's. ENVIRONMENT and LIBS are optional.
function(wmsg_add_test source)
    cmake_parse_arguments(ARG "" "RESOURCE_LOCK" "LIBS;SOURCES;LABELS;ENVIRONMENT" ${ARGN})
    get_filename_component(name ${source} NAME_WE)
    add_executable(${name} ${source} ${ARG_SOURCES})
    wmsg_compile_options(${name})
    wmsg_share_test_headers(${name})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    target_compile_definitions(${name} PRIVATE WMSG_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data")
    target_link_libraries(${name} PRIVATE wmsg wmsg::system wmsg::mimetype Qt6::Test ${ARG_LIBS})
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 300
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;${ARG_ENVIRONMENT}")
    if(ARG_LABELS)
        set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}")
    endif()
    if(ARG_RESOURCE_LOCK)
        set_tests_properties(${name} PROPERTIES RESOURCE_LOCK ${ARG_RESOURCE_LOCK})
    endif()
endfunction()
