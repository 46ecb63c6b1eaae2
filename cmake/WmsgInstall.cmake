# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

# What is installed: the libraries, their headers in the layout of the source tree with a header per public
# class beside them, the CMake package and the pkg-config file.

include(CMakePackageConfigHelpers)
include(WmsgForwarding)

wmsg_forwarding_headers()

# The contracts of the platform are installed also where a phone's own library fulfils them.
file(GLOB_RECURSE contracts CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/platform/*.h)
list(FILTER contracts EXCLUDE REGEX "_p\\.h$")
# Objects of a service belong to its own library, which has their meta-objects.
set_source_files_properties(${contracts} PROPERTIES SKIP_AUTOMOC ON)
target_sources(wmsg PUBLIC FILE_SET contracts TYPE HEADERS
    BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${contracts})

set(libraries wmsg)
set(phone_libraries)
foreach(service system mimetype engine drmclient telephony)
    string(TOUPPER ${service} upper)
    if(WMSG_${upper}_LIBRARY)
        string(APPEND phone_libraries "wmsg_phone_library(wmsg-${service} \"${WMSG_${upper}_LIBRARY}\")\n")
    else()
        set_target_properties(wmsg-${service} PROPERTIES EXPORT_NAME ${service})
        list(APPEND libraries wmsg-${service})
    endif()
endforeach()

set(include_folder ${CMAKE_INSTALL_INCLUDEDIR}/wmsg)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/wmsg)
install(TARGETS ${libraries} EXPORT wmsg-targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS DESTINATION ${include_folder}
    FILE_SET contracts DESTINATION ${include_folder}
    FILE_SET generated DESTINATION ${include_folder})
install(EXPORT wmsg-targets NAMESPACE wmsg:: DESTINATION ${package_folder})

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/wmsg-config.cmake.in
    ${PROJECT_BINARY_DIR}/wmsg-config.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/wmsg-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/wmsg-config.cmake ${PROJECT_BINARY_DIR}/wmsg-config-version.cmake
    DESTINATION ${package_folder})

# The pkg-config file finds its prefix from where it lies; folders given as absolute paths stay absolute.
cmake_path(SET libdir "\${prefix}")
cmake_path(APPEND libdir ${CMAKE_INSTALL_LIBDIR})
cmake_path(SET includedir "\${prefix}")
cmake_path(APPEND includedir ${CMAKE_INSTALL_INCLUDEDIR})
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    set(prefix ${CMAKE_INSTALL_PREFIX})
else()
    string(REGEX REPLACE "[^/]+" ".." prefix ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
    string(PREPEND prefix "\${pcfiledir}/")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/wmsg.pc.in ${PROJECT_BINARY_DIR}/wmsg.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/wmsg.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(WMSG_DEVELOPER)
    # Each public header compiles alone; the forwarding headers do when those do.
    set_target_properties(wmsg PROPERTIES INTERFACE_HEADER_SETS_TO_VERIFY "HEADERS;contracts")
    add_custom_target(public_headers_compile ALL)
    add_dependencies(public_headers_compile all_verify_interface_header_sets)
endif()
