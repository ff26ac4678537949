# The Debian packages that cpack -G DEB makes of the install's components:
# orbel: the program, its presets and the plug-in module; liborbel-dev: the front door, a shared library, for other
# programs; libband-equalizer-dev: the toolkit behind it, a static library; python3-orbel: the package for Python, and
# gegl-orbel: the operation for GEGL, where they were built.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "Orbel Band Equalizer maintainers <orbel@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
if(ORBEL_SYSROOT)  # whose libraries, and the packages that have them, are what is depended on: scripts/release.sh
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${ORBEL_SYSROOT}/usr/lib/aarch64-linux-gnu)
endif()
set(CPACK_COMPONENTS_ALL orbel module door dev)
set(CPACK_COMPONENT_ORBEL_GROUP orbel)
set(CPACK_COMPONENT_MODULE_GROUP orbel)
set(CPACK_COMPONENT_DOOR_GROUP door)
set(CPACK_COMPONENT_DEV_GROUP dev)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ORBEL_PACKAGE_NAME orbel)
set(CPACK_DEBIAN_ORBEL_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_ORBEL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ORBEL_PACKAGE_RECOMMENDS libimage-exiftool-perl)
set(CPACK_DEBIAN_ORBEL_DESCRIPTION
  "equalizer for the detail in photographs\n"
  "Takes pictures apart into five bands of detail and a residual, weighs each, and\n"
  "puts them together again: one file or thousands, with presets.")
string(JOIN "" CPACK_DEBIAN_ORBEL_DESCRIPTION ${CPACK_DEBIAN_ORBEL_DESCRIPTION})
set(CPACK_DEBIAN_DOOR_PACKAGE_NAME liborbel-dev)
set(CPACK_DEBIAN_DOOR_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DOOR_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DOOR_DESCRIPTION
  "equalizer for the detail in photographs: library\n"
  "The engine for other programs, in C, with files for CMake and pkg-config.")
string(JOIN "" CPACK_DEBIAN_DOOR_DESCRIPTION ${CPACK_DEBIAN_DOOR_DESCRIPTION})
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libband-equalizer-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_RECOMMENDS g++)
set(CPACK_DEBIAN_DEV_DESCRIPTION
  "equalizer for the detail in photographs: static library\n"
  "The band equalizer and its image toolkit for other programs, with files for CMake\n"
  "and pkg-config.")
string(JOIN "" CPACK_DEBIAN_DEV_DESCRIPTION ${CPACK_DEBIAN_DEV_DESCRIPTION})
if(TARGET orbel_python)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
if(TARGET orbel_gegl)
  list(APPEND CPACK_COMPONENTS_ALL gegl)
endif()
set(CPACK_COMPONENT_GEGL_GROUP gegl)
set(CPACK_DEBIAN_GEGL_PACKAGE_NAME gegl-orbel)
set(CPACK_DEBIAN_GEGL_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_GEGL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_GEGL_PACKAGE_ENHANCES "gimp, gegl")
set(CPACK_DEBIAN_GEGL_DESCRIPTION
  "equalizer for the detail in photographs: operation for GEGL\n"
  "The band equalizer among GIMP's GEGL operations, with a dialog and a preview.")
string(JOIN "" CPACK_DEBIAN_GEGL_DESCRIPTION ${CPACK_DEBIAN_GEGL_DESCRIPTION})
set(CPACK_COMPONENT_PYTHON_GROUP python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-orbel)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/python3-orbel/prerm)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "${ORBEL_PYTHON_DEPENDS}")
set(CPACK_DEBIAN_PYTHON_DESCRIPTION
  "equalizer for the detail in photographs: Python 3\n"
  "The engine for numpy's arrays: pictures equalized, taken apart into bands, and\n"
  "weighed often.")
string(JOIN "" CPACK_DEBIAN_PYTHON_DESCRIPTION ${CPACK_DEBIAN_PYTHON_DESCRIPTION})
include(CPack)
