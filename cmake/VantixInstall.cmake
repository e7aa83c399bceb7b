# What `make install` (cmake --install) puts under the prefix, and how an
# installed Vantix is found again: CMake package, pkg-config file, man pages.
# Included from the top-level CMakeLists.txt once every target exists.
#
# Every file belongs to one component, and each component becomes one Debian
# package (cmake/VantixPackaging.cmake):
#
#   runtime  the shared libraries                                -> libvantix0
#   dev      headers, .so links, the control client library,
#            CMake package files, vantix.pc                      -> libvantix-dev
#   tools    programs, their man pages, the example scenarios    -> vantix-tools
#
# A new program joins the tools package with, in its own CMakeLists.txt,
#     install(TARGETS x RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
# and its name in VANTIX_MAN_PAGES below (man/x.h2m adds sections to its page).

include(CMakePackageConfigHelpers)

set(VANTIX_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Vantix)

# The libraries with their headers (each target's PUBLIC_HEADER list, installed
# flat under include/<name in lower case>/). QBCom and QBCommon keep their own
# export sets so that, installed, their targets have the names they have here:
# QBCom::QBCom and QBCommon::QBCommon.
set(VANTIX_HEADER_MANIFEST "")
foreach(library QBCom QBCommon Vantix)
    string(TOLOWER ${library} folder)
    install(TARGETS ${library} EXPORT ${library}Targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
        PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder} COMPONENT dev)
    install(EXPORT ${library}Targets NAMESPACE ${library}:: DESTINATION ${VANTIX_CMAKE_DIR} COMPONENT dev)
    get_target_property(headers ${library} PUBLIC_HEADER)
    foreach(header IN LISTS headers)
        get_filename_component(name ${header} NAME)
        string(APPEND VANTIX_HEADER_MANIFEST "${folder}/${name}\n")
    endforeach()
endforeach()
# The control code (namespace VantixControl) keeps its sides apart when
# installed as in the tree: include/vantixcontrol/{protocol,engine,client}/.
# The client library is static and, like the headers, for developers only.
install(TARGETS VantixControlClient EXPORT VantixTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
foreach(library Vantix VantixControlClient)
    get_target_property(control_headers ${library} VANTIXCONTROL_PUBLIC_HEADERS)
    foreach(header IN LISTS control_headers)
        file(RELATIVE_PATH path ${PROJECT_SOURCE_DIR}/libs/libVantix ${header})
        get_filename_component(folder ${path} DIRECTORY)
        install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder} COMPONENT dev)
        string(APPEND VANTIX_HEADER_MANIFEST "${path}\n")
    endforeach()
endforeach()
# The headers that must be installed, one include path a line, for the
# install test (scripts/test-install.sh).
file(WRITE ${PROJECT_BINARY_DIR}/public-headers.txt "${VANTIX_HEADER_MANIFEST}")

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/VantixConfig.cmake.in
    ${PROJECT_BINARY_DIR}/VantixConfig.cmake
    INSTALL_DESTINATION ${VANTIX_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VantixConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VantixConfig.cmake ${PROJECT_BINARY_DIR}/VantixConfigVersion.cmake
    DESTINATION ${VANTIX_CMAKE_DIR} COMPONENT dev)

# vantix.pc names the prefix, which `cmake --install --prefix` and CPack may
# change after configuring: it is written at install time.
foreach(dir LIBDIR INCLUDEDIR)
    if(IS_ABSOLUTE "${CMAKE_INSTALL_${dir}}")
        set(VANTIX_PC_${dir} "${CMAKE_INSTALL_${dir}}")
    else()
        set(VANTIX_PC_${dir} "\${prefix}/${CMAKE_INSTALL_${dir}}")
    endif()
endforeach()
install(CODE "
    set(VANTIX_PC_LIBDIR [=[${VANTIX_PC_LIBDIR}]=])
    set(VANTIX_PC_INCLUDEDIR [=[${VANTIX_PC_INCLUDEDIR}]=])
    set(PROJECT_VERSION ${PROJECT_VERSION})
    configure_file([=[${CMAKE_CURRENT_LIST_DIR}/vantix.pc.in]=] [=[${PROJECT_BINARY_DIR}/vantix.pc]=] @ONLY)
" COMPONENT dev)
install(FILES ${PROJECT_BINARY_DIR}/vantix.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/scenarios/ DESTINATION ${CMAKE_INSTALL_DATADIR}/vantix/scenarios
    COMPONENT tools FILES_MATCHING PATTERN "*.vsim" PATTERN "*.csv")

# Man pages, made at build time by help2man from each program's --help and
# --version, so that the options on the page are the program's own; the other
# sections (commands, files, examples) come from man/<program>.h2m. Sanitizer
# builds skip them: running their programs at build time reports Qt's leaks.
set(VANTIX_MAN_PAGES vantix-ctl vantix-panel vantix-sim vantix-test)
if(NOT VANTIX_SANITIZE AND NOT VANTIX_FUZZ)
    find_program(HELP2MAN help2man REQUIRED)
    find_program(GZIP gzip REQUIRED)
    set(pages "")
    foreach(program IN LISTS VANTIX_MAN_PAGES)
        set(page ${PROJECT_BINARY_DIR}/man/${program}.1.gz)
        set(include ${PROJECT_SOURCE_DIR}/man/${program}.h2m)
        if(NOT EXISTS ${include})
            set(include "")
        endif()
        add_custom_command(OUTPUT ${page}
            COMMAND ${CMAKE_COMMAND} -DHELP2MAN=${HELP2MAN} -DGZIP=${GZIP} -DPROGRAM=$<TARGET_FILE:${program}>
                -DINCLUDE=${include} -DOUTPUT=${page} -P ${CMAKE_CURRENT_LIST_DIR}/VantixManPage.cmake
            DEPENDS ${program} ${include} ${CMAKE_CURRENT_LIST_DIR}/VantixManPage.cmake
            COMMENT "Writing the man page of ${program}"
            VERBATIM)
        list(APPEND pages ${page})
    endforeach()
    add_custom_target(man-pages ALL DEPENDS ${pages})
    install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endif()
