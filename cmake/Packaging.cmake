# Debian packages of the build, with CPack (cpack -G DEB, or the package
# presets): libvorn1 (the shared objects), libvorn-dev (headers, CMake package,
# pkg-config file) and vorn-tools (every program tools/ installs: its default
# install component is "tools").
set(VORN_PACKAGE_MAINTAINER "Vorn developers <vorn-dev@lists.vorn.example>"
    CACHE STRING "The Maintainer field of the Debian packages")

set(CPACK_PACKAGE_NAME vorn)
set(CPACK_PACKAGE_VENDOR "The Vorn developers")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${VORN_PACKAGE_MAINTAINER})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${VORN_PACKAGE_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://vorn.example/")
# Dependencies computed from the shared objects (dpkg-shlibdeps), the
# library's own soname dependency published for its users (shlibs), and each
# package depending on the exact version of the others it needs.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
# The tools link the library of the package being built next to them.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    ${CMAKE_BINARY_DIR}/Vorn ${CMAKE_BINARY_DIR}/platform)
# The 32-bit build (the m32 preset) makes the i386 set.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
endif()

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libvorn${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# The dynamic linker's cache is refreshed by the ldconfig trigger.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "hardware-support library for fabric-attached packet processors
libvorn is the library through which a network switch operating system's
agents talk to the fabric kernel driver (/dev/fabric, /proc/vorn-dma), set up
host network devices, convert between the platform's identifier spaces and
compute control-plane policing and egress-buffer defaults.
.
This package holds the shared objects: the library and its platform layer.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libvorn-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEV_DEPENDS runtime)
set(CPACK_COMPONENT_DEV_DESCRIPTION
    "development files of the Vorn hardware-support library
libvorn is the library through which a network switch operating system's
agents talk to the fabric kernel driver.
.
This package holds the headers of the library and of its platform layer, the
CMake package (find_package(Vorn), target Vorn::vorn) and the pkg-config
file (vorn).")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME vorn-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "tools of the Vorn hardware-support library
vornctl runs the library's jobs by hand: a scripted bring-up of a system,
the driver's device and LAG tables, the egress-buffer and control-plane
policing defaults, identifier conversions and the decoding of ring trace
files. It drives the kernel driver, or an embedded emulator of it where there
is none. vorn-fabricd serves one emulated driver to many processes over a Unix
socket.")

# Every package carries its copyright and changelog in /usr/share/doc.
set(VORN_DEB_DOC ${CMAKE_BINARY_DIR}/debian-doc)
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/changelog.in ${VORN_DEB_DOC}/changelog.Debian)
execute_process(COMMAND gzip -9 -n -f ${VORN_DEB_DOC}/changelog.Debian)

set(VORN_DEB_COMPONENTS runtime dev)
if(TARGET vornctl)  # VORN_TOOLS on: tools/ installs into "tools"
  list(APPEND VORN_DEB_COMPONENTS tools)
endif()
foreach(component IN LISTS VORN_DEB_COMPONENTS)
  string(TOUPPER ${component} upper)
  install(FILES ${CMAKE_CURRENT_LIST_DIR}/debian/copyright ${VORN_DEB_DOC}/changelog.Debian.gz
          DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}
          COMPONENT ${component})
endforeach()
set(CPACK_COMPONENTS_ALL ${VORN_DEB_COMPONENTS})

include(CPack)
