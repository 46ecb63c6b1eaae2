# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

# The manual pages, made from what the programs answer to --help, and the completion of the command line.

install(FILES ${PROJECT_SOURCE_DIR}/tools/wmsg/wmsg.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME wmsg)
if(WMSG_DEVELOPER)
    add_test(NAME completion COMMAND ${PROJECT_SOURCE_DIR}/tests/package/completion.sh
        $<TARGET_FILE:wmsg-cli> ${PROJECT_SOURCE_DIR}/tools/wmsg/wmsg.bash)
endif()

# A cross build cannot ask the programs.
find_program(HELP2MAN help2man)
if(NOT HELP2MAN OR CMAKE_CROSSCOMPILING)
    message(STATUS "No manual pages: they want help2man, and programs that run here")
    return()
endif()

set(programs wmsg-cli wmsg-mmsproxyd wmsg-sim-mmsc)
foreach(program wmsg-telephonyd wmsg-sim-modem)
    if(TARGET ${program})
        list(APPEND programs ${program})
    endif()
endforeach()
set(pages ${PROJECT_BINARY_DIR}/man)
list(TRANSFORM programs REPLACE ".+" "$<TARGET_FILE:\\0>" OUTPUT_VARIABLE program_files)
add_custom_command(OUTPUT ${pages}.made
    COMMAND ${PROJECT_SOURCE_DIR}/cmake/make_man_pages.py ${HELP2MAN} ${pages} ${program_files}
    COMMAND ${CMAKE_COMMAND} -E touch ${pages}.made
    DEPENDS ${programs} ${PROJECT_SOURCE_DIR}/cmake/make_man_pages.py
    COMMENT "Making the manual pages" VERBATIM)
add_custom_target(man_pages ALL DEPENDS ${pages}.made)
install(DIRECTORY ${pages}/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 FILES_MATCHING PATTERN "*.1")
if(WMSG_DEVELOPER)
    add_test(NAME man_pages
        COMMAND ${PROJECT_SOURCE_DIR}/tests/package/man_pages.py ${pages} ${program_files})
    set_tests_properties(man_pages PROPERTIES ENVIRONMENT PYTHONDONTWRITEBYTECODE=1 TIMEOUT 300)
endif()
