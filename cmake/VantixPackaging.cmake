# Debian packages with CPack, one per install component (cmake/VantixInstall.cmake):
#
#   libvantix0     runtime  the shared libraries (Vantix, QBCom, QBCommon)
#   libvantix-dev  dev      headers, .so links, CMake package, vantix.pc
#   vantix-tools   tools    programs, man pages, example scenarios
#
# `make package` configures a build with the prefix /usr (so that GNUInstallDirs
# gives the multiarch library folder and no RPATH is set) and runs cpack there.

# Each package carries the copyright file and the Debian changelog (gzip -9n:
# the same bytes on every build) in /usr/share/doc/<package>/.
set(VANTIX_CHANGELOG ${PROJECT_SOURCE_DIR}/packaging/debian/changelog)
set(VANTIX_COPYRIGHT ${PROJECT_SOURCE_DIR}/packaging/debian/copyright)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${VANTIX_CHANGELOG})

# The packages take their version from project(); the changelog must say so too.
file(STRINGS ${VANTIX_CHANGELOG} changelog_head LIMIT_COUNT 1)
if(NOT changelog_head MATCHES "^vantix \\(([^)]+)\\)")
    message(FATAL_ERROR "${VANTIX_CHANGELOG}: the first line is not a Debian changelog entry of vantix")
endif()
if(NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
    message(FATAL_ERROR "${VANTIX_CHANGELOG} starts at ${CMAKE_MATCH_1}, the project is at ${PROJECT_VERSION}: "
        "add an entry for ${PROJECT_VERSION} at its top")
endif()
execute_process(COMMAND gzip -9nc INPUT_FILE ${VANTIX_CHANGELOG} OUTPUT_FILE ${PROJECT_BINARY_DIR}/changelog.gz
    RESULT_VARIABLE gzip_result)
if(NOT gzip_result EQUAL 0)
    message(FATAL_ERROR "gzip failed on ${VANTIX_CHANGELOG}")
endif()

# Files for the packages only: a build for another prefix leaves them out.
set(VANTIX_DEBIAN_FILES OFF)
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(VANTIX_DEBIAN_FILES ON)
endif()

set(VANTIX_PACKAGE_runtime libvantix0)
set(VANTIX_PACKAGE_dev libvantix-dev)
set(VANTIX_PACKAGE_tools vantix-tools)
if(VANTIX_DEBIAN_FILES)
    foreach(component runtime dev tools)
        install(FILES ${VANTIX_COPYRIGHT} ${PROJECT_BINARY_DIR}/changelog.gz
            DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${VANTIX_PACKAGE_${component}} COMPONENT ${component})
    endforeach()
endif()

set(VANTIX_PACKAGE_MAINTAINER "Vantix maintainers <maintainers@users.noreply.c-seed-68119295.example>"
    CACHE STRING "Maintainer field of the Debian packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vantix)
set(CPACK_PACKAGE_VENDOR "the Vantix developers")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_OUTPUT_FILE_PREFIX ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev tools)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${VANTIX_PACKAGE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# dpkg-shlibdeps computes what the binaries need; the packages among
# themselves depend on this very version.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The programs need the libraries of libvantix0, staged beside them; the
# version constraint comes from the component dependency.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ../runtime/usr/${CMAKE_INSTALL_LIBDIR})
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${VANTIX_PACKAGE_runtime})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# The ldconfig trigger Debian wants of a library package. CPack adds ldconfig
# calls to postinst and postrm as well, which the override explains to lintian.
configure_file(${PROJECT_SOURCE_DIR}/packaging/debian/libvantix0.triggers ${PROJECT_BINARY_DIR}/runtime/triggers COPYONLY)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/runtime/triggers)
if(VANTIX_DEBIAN_FILES)
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/debian/libvantix0.lintian-overrides
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides RENAME libvantix0 COMPONENT runtime)
endif()
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "device API of the Tolvex, Quarnel and CAN CPU units (desktop stub)
Vantix is the Qt 5 library through which the applications of the Tolvex
tablet, the Quarnel link box and the CAN CPU module reach their hardware.
This desktop stub simulates every device in memory, so that an application
runs unchanged on a workstation.

This package holds the shared libraries: Vantix and the platform libraries
QBCom and QBCommon.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME ${VANTIX_PACKAGE_dev})
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
# The headers include Qt's, and the CMake package finds Qt5 Core and Network.
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "qtbase5-dev (>= 5.15)")
set(CPACK_COMPONENT_DEV_DEPENDS runtime)
set(CPACK_DEBIAN_DEV_DESCRIPTION "device API of the Tolvex, Quarnel and CAN CPU units (development files)
Vantix is the Qt 5 library through which the applications of the Tolvex
tablet, the Quarnel link box and the CAN CPU module reach their hardware.

This package holds what building against it needs: the headers of Vantix,
QBCom and QBCommon, the CMake package (find_package(Vantix) gives the target
Vantix::Vantix) and the pkg-config file vantix.pc.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ${VANTIX_PACKAGE_tools})
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
# vantix-test --speed and vantix-sim --speed preload libfaketime; everything else runs without it.
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "faketime")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "simulator of the Tolvex, Quarnel and CAN CPU units' hardware
vantix-sim runs the simulated hardware of one platform of the Vantix device
API, shows every event it raises and takes commands by hand or from a
script, with checks for automated tests. vantix-test runs a folder of such
scenarios as a test suite, each against a fresh instance of an application,
in parallel and in accelerated time, with a JUnit report.

This package holds the programs, their man pages and example scenarios.")

# Packages made from a build configured for another prefix would have the
# wrong library folder and an RPATH: cpack refuses them.
file(WRITE ${PROJECT_BINARY_DIR}/CPackProjectConfig.cmake "
if(NOT [=[${CMAKE_INSTALL_PREFIX}]=] STREQUAL \"/usr\")
    message(FATAL_ERROR \"Debian packages need a build configured with -DCMAKE_INSTALL_PREFIX=/usr (make package)\")
endif()
")
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/CPackProjectConfig.cmake)

include(CPack)
