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

# Reading the headers of Qt is most of the time that a source takes to compile: all targets of a group share one
# compiled copy of the group's headers. A compiler cache wins more, and cannot see through precompiled headers.
# Only developers' builds do this, so that the others, and the analyser, see to it that each source includes
# what it needs. A copy fits where the macros of its own compilation are defined too.
function(wmsg_share_headers target group)
    cmake_parse_arguments(ARG "" "" "HEADERS;LIBS;OPTIONS" ${ARGN})
    if(CMAKE_CXX_COMPILER_LAUNCHER OR NOT WMSG_DEVELOPER)
        return()
    endif()
    set(owner wmsg-${group}-headers)
    if(NOT TARGET ${owner})
        file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/${group}_headers.cpp CONTENT "// Holds nothing.\n")
        add_library(${owner} OBJECT ${PROJECT_BINARY_DIR}/${group}_headers.cpp)
        wmsg_compile_options(${owner})
        target_compile_options(${owner} PRIVATE ${ARG_OPTIONS})
        set_target_properties(${owner} PROPERTIES AUTOMOC OFF)
        target_link_libraries(${owner} PRIVATE ${ARG_LIBS})
        target_precompile_headers(${owner} PRIVATE ${ARG_HEADERS})
    endif()
    target_precompile_headers(${target} REUSE_FROM ${owner})
endfunction()

# Library and program code spells conversions and signals out; tests are free of that. HEADERS are large ones
# that most sources of the target include beside those of Qt.
function(wmsg_strict_qt target)
    cmake_parse_arguments(ARG "" "" "HEADERS" ${ARGN})
    set(strictness -DQT_NO_CAST_FROM_ASCII -DQT_NO_CAST_TO_ASCII -DQT_NO_KEYWORDS)
    target_compile_options(${target} PRIVATE ${strictness})
    set(group qt)
    if(ARG_HEADERS)
        set(group ${target})
    endif()
    wmsg_share_headers(${target} ${group} LIBS Qt6::Core OPTIONS ${strictness} HEADERS
        <QtCore/QDateTime> <QtCore/QDir> <QtCore/QFile> <QtCore/QHash> <QtCore/QJsonObject>
        <QtCore/QLoggingCategory> <QtCore/QObject> <QtCore/QStringList> <QtCore/QTimer>
        <algorithm> <array> <functional> <memory> <optional> <string> <vector> ${ARG_HEADERS})
endfunction()

# The loader unpacks relocations for a library that asks for it by name. Some linkers pack and do not ask (mold), or
# do neither, and where the loader cannot do it there is nothing of that name: what was linked is looked at.
function(wmsg_check_packing)
    if(DEFINED WMSG_PACKS_RELOCATIONS)
        return()
    endif()
    set(probe ${PROJECT_BINARY_DIR}/packed_relocations)
    file(WRITE ${probe}.cpp "#include <cstdio>\nstatic int number;\nint *table[] = {&number};\n"
        "void print() { std::puts(\"\"); }\n")
    get_directory_property(link_options LINK_OPTIONS)
    try_compile(is_linked SOURCES ${probe}.cpp COMPILE_DEFINITIONS -fPIC
        LINK_OPTIONS ${link_options} -shared -Wl,-z,pack-relative-relocs COPY_FILE ${probe}.so)
    if(is_linked)
        file(STRINGS ${probe}.so asks REGEX GLIBC_ABI_DT_RELR)
    endif()
    if(asks)
        set(WMSG_PACKS_RELOCATIONS ON CACHE INTERNAL "Linker and loader agree on packed relocations")
    else()
        set(WMSG_PACKS_RELOCATIONS OFF CACHE INTERNAL "Linker and loader agree on packed relocations")
    endif()
endfunction()

# Applications carry the library into every process: it is built to be small. What has to be fast beside that says so
# where its sources are listed.
function(wmsg_keep_small target)
    target_compile_options(${target} PRIVATE
        $<$<CONFIG:Release>:-O2>
        # Each object would have its own copy of what templates share, changed to its taste.
        $<$<CXX_COMPILER_ID:GNU>:-fno-ipa-sra>)
    # What holds for calls within an object (see wmsg_compile_options) holds for those between them. Applications
    # compare addresses of signals: those of Qt are built with -fPIC, and have the addresses of the library.
    target_link_options(${target} PRIVATE -Wl,-Bsymbolic-functions)
    wmsg_check_packing()
    if(WMSG_PACKS_RELOCATIONS)
        target_link_options(${target} PRIVATE -Wl,-z,pack-relative-relocs)
    endif()
endfunction()

# The SDK library; the folders add their sources with target_sources() and wmsg_public_headers().
function(wmsg_add_sdk_library)
    add_library(wmsg SHARED)
    add_library(wmsg::wmsg ALIAS wmsg)
    set_target_properties(wmsg PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
    wmsg_compile_options(wmsg)
    wmsg_strict_qt(wmsg)
    wmsg_keep_small(wmsg)
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

# One test program per source; its name is the source's. ENVIRONMENT and LIBS are optional.
function(wmsg_add_test source)
    cmake_parse_arguments(ARG "" "RESOURCE_LOCK" "LIBS;SOURCES;LABELS;ENVIRONMENT" ${ARGN})
    get_filename_component(name ${source} NAME_WE)
    add_executable(${name} ${source} ${ARG_SOURCES})
    wmsg_compile_options(${name})
    # Qt hands each test its own folder as a macro; a shared copy wants the same macros everywhere.
    set(same_macros -UQT_TESTCASE_BUILDDIR -UQT_TESTCASE_SOURCEDIR)
    target_compile_options(${name} PRIVATE ${same_macros})
    wmsg_share_headers(${name} test HEADERS <QtTest/QtTest> LIBS Qt6::Test Qt6::Network
        OPTIONS ${same_macros})
    # A test includes its meta-objects itself: asking for nothing else saves a tenth of the whole build.
    set_target_properties(${name} PROPERTIES AUTOMOC OFF)
    set(moc ${CMAKE_CURRENT_BINARY_DIR}/${name}.moc)
    add_custom_command(OUTPUT ${moc} DEPENDS ${source} VERBATIM
        COMMAND Qt6::moc --no-notes ${CMAKE_CURRENT_SOURCE_DIR}/${source} -o ${moc})
    target_sources(${name} PRIVATE ${moc})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_BINARY_DIR})
    target_compile_definitions(${name} PRIVATE WMSG_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data")
    target_link_libraries(${name} PRIVATE wmsg wmsg::system wmsg::mimetype Qt6::Test ${ARG_LIBS})
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 300
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;${ARG_ENVIRONMENT}")
    if(ARG_LABELS)
        set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}")
    endif()
    # Those that wait for each other begin early.
    if(ARG_RESOURCE_LOCK)
        set_tests_properties(${name} PROPERTIES RESOURCE_LOCK ${ARG_RESOURCE_LOCK} COST 100)
    endif()
endfunction()
