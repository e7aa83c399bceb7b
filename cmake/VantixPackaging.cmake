# Debian packages with CPack, one per install component (cmake/VantixInstall.cmake):
#
#   libvantix0     runtime  the shared libraries (Vantix, QBCom, QBCommon)
#   libvantix-dev  dev      headers, .so links, CMake package, vantix.pc
#   vantix-tools   tools    programs, man pages, example scenarios
#   python3-vantix python   the Python package of python/ for Debian's python3
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

# The Python package (python/vantix) for Debian's python3, with its
# .dist-info so that pytest finds the plugin's entry point. Only a /usr
# build installs it: elsewhere, pip installs it (python/README.md).
set(VANTIX_PACKAGE_python python3-vantix)
set(VANTIX_COMPONENTS runtime dev tools)
find_package(Python3 3.9 COMPONENTS Interpreter QUIET)
if(VANTIX_DEBIAN_FILES AND Python3_Interpreter_FOUND)
    set(backend ${PROJECT_SOURCE_DIR}/python/build_backend/vantix_build.py)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${backend}
        ${PROJECT_SOURCE_DIR}/python/vantix/__init__.py ${PROJECT_SOURCE_DIR}/python/README.md)
    execute_process(COMMAND ${Python3_EXECUTABLE} ${backend} version
        OUTPUT_VARIABLE python_version OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE python_result)
    if(NOT python_result EQUAL 0 OR NOT python_version STREQUAL PROJECT_VERSION)
        message(FATAL_ERROR "python/vantix/__init__.py says version \"${python_version}\", "
            "the project is at ${PROJECT_VERSION}: set __version__ there")
    endif()
    file(REMOVE_RECURSE ${PROJECT_BINARY_DIR}/python-dist-info)
    execute_process(COMMAND ${Python3_EXECUTABLE} ${backend} dist-info ${PROJECT_BINARY_DIR}/python-dist-info
        OUTPUT_VARIABLE dist_info OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE python_result)
    if(NOT python_result EQUAL 0)
        message(FATAL_ERROR "python/build_backend/vantix_build.py could not write the .dist-info")
    endif()
    # Debian's own folder for modules of every python3 version.
    set(dist_packages lib/python3/dist-packages)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/python/vantix DESTINATION ${dist_packages} COMPONENT python
        FILES_MATCHING PATTERN "*.py" PATTERN "__pycache__" EXCLUDE)
    install(DIRECTORY ${PROJECT_BINARY_DIR}/python-dist-info/${dist_info} DESTINATION ${dist_packages}
        COMPONENT python)
    install(FILES ${VANTIX_COPYRIGHT} ${PROJECT_BINARY_DIR}/changelog.gz
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${VANTIX_PACKAGE_python} COMPONENT python)
    list(APPEND VANTIX_COMPONENTS python)
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
set(CPACK_COMPONENTS_ALL ${VANTIX_COMPONENTS})
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

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME ${VANTIX_PACKAGE_python})
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
# It talks to applications over their socket: no library of ours is needed.
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9)")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-pytest, python3-pytest-xdist, faketime, vantix-tools")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/python/debian/postinst ${PROJECT_SOURCE_DIR}/python/debian/prerm)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PYTHON_DESCRIPTION "Python client of the Vantix control protocol, and a pytest plugin
Every application that links the desktop stub of Vantix serves its
simulated hardware on a local socket. This package is a client of it for
Python 3: typed values and errors, events and log entries with filters and
timeouts, and a pytest plugin that starts an application for each test in a
private folder and reports its events, log and output when a test fails.")

# Packages made from a build configured for another prefix would have the
# wrong library folder and an RPATH: cpack refuses them.
file(WRITE ${PROJECT_BINARY_DIR}/CPackProjectConfig.cmake "
if(NOT [=[${CMAKE_INSTALL_PREFIX}]=] STREQUAL \"/usr\")
    message(FATAL_ERROR \"Debian packages need a build configured with -DCMAKE_INSTALL_PREFIX=/usr (make package)\")
endif()
")
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/CPackProjectConfig.cmake)

include(CPack)
