# What cmake --install puts where, by component; cmake/packages.cmake makes packages of it.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(ORBEL_MODULE_DESTINATION ${CMAKE_INSTALL_LIBDIR}/orbel)
set(ORBEL_PRESETS_DESTINATION ${CMAKE_INSTALL_DATADIR}/orbel/presets)

# By which other projects find a library: files for CMake and pkg-config.
function(orbel_install_library name component)
  set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/${name})
  install(EXPORT ${name} FILE ${name}Targets.cmake NAMESPACE ${name}:: DESTINATION ${config_folder}
    COMPONENT ${component})
  configure_package_config_file(cmake/${name}Config.cmake.in ${name}Config.cmake INSTALL_DESTINATION ${config_folder})
  write_basic_package_version_file(${name}ConfigVersion.cmake COMPATIBILITY SameMinorVersion)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}Config.cmake ${CMAKE_CURRENT_BINARY_DIR}/${name}ConfigVersion.cmake
    DESTINATION ${config_folder} COMPONENT ${component})

  # Relative, so that the files may be moved as a whole.
  set(pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  file(RELATIVE_PATH prefix_from_pkgconfig /${pkgconfig_folder} /)
  configure_file(cmake/${name}.pc.in ${name}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc DESTINATION ${pkgconfig_folder} COMPONENT ${component})
endfunction()

# The licence, what its reader does first, and, where scripts/release.sh has found it out, what was compiled in.
function(orbel_install_texts component package)
  set(folder ${CMAKE_INSTALL_DATADIR}/doc/${package})
  install(FILES LICENSE DESTINATION ${folder} RENAME copyright COMPONENT ${component})
  install(FILES docs/downloads/${package}.txt DESTINATION ${folder} RENAME README.txt COMPONENT ${component})
  install(DIRECTORY ${CMAKE_BINARY_DIR}/bills/${package}/ DESTINATION ${folder} COMPONENT ${component} OPTIONAL)
endfunction()

# After all targets are there: a function, because the destinations above are needed before.
function(orbel_install)
  set(python_module "")
  if(TARGET orbel_python)
    set(python_module "\"$<TARGET_FILE:orbel_python>\"")
  endif()
  # First of all, or the first file that is missing would be named without a reason.
  string(CONFIGURE [[
    foreach(file "$<TARGET_FILE:orbel>" "$<TARGET_FILE:OrbelBandEqualizer>" "$<TARGET_FILE:band_equalizer>" "$<TARGET_FILE:orbel_shared>"
        "@CMAKE_BINARY_DIR@/orbel.1" "@CMAKE_BINARY_DIR@/orbel.bash" "@CMAKE_BINARY_DIR@/_orbel"
        "@CMAKE_BINARY_DIR@/orbel.fish" @python_module@)
      if(NOT EXISTS "${file}")
        message(FATAL_ERROR "This build is not complete, ${file} is missing. First build all of it:\n"
          "  cmake --build @CMAKE_BINARY_DIR@")
      endif()
    endforeach()]] whole_build @ONLY)
  install(CODE "${whole_build}" ALL_COMPONENTS)

  install(TARGETS orbel RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT orbel)
  install(DIRECTORY tools/presets/ DESTINATION ${ORBEL_PRESETS_DESTINATION} COMPONENT orbel FILES_MATCHING PATTERN *.toml)
  install(FILES ${CMAKE_BINARY_DIR}/orbel.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT orbel)
  install(FILES ${CMAKE_BINARY_DIR}/orbel.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME orbel COMPONENT orbel)
  install(FILES ${CMAKE_BINARY_DIR}/_orbel DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT orbel)
  install(FILES ${CMAKE_BINARY_DIR}/orbel.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d
    COMPONENT orbel)
  install(DIRECTORY integrations/ DESTINATION ${CMAKE_INSTALL_DATADIR}/orbel/integrations USE_SOURCE_PERMISSIONS
    COMPONENT orbel)
  install(TARGETS OrbelBandEqualizer LIBRARY DESTINATION ${ORBEL_MODULE_DESTINATION} COMPONENT module)

  install(TARGETS orbel_shared EXPORT orbel
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT door
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT door)
  orbel_install_library(orbel door)
  install(TARGETS band_equalizer EXPORT band_equalizer
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/band_equalizer COMPONENT dev)
  orbel_install_library(band_equalizer dev)
  if(TARGET orbel_gegl)
    # Below the prefix as GEGL's own operations are below GEGL's, or it wouldn't look there.
    pkg_get_variable(gegl_prefix gegl-0.4 prefix)
    file(RELATIVE_PATH gegl_folder ${gegl_prefix} ${ORBEL_GEGL_FOLDER})
    install(TARGETS orbel_gegl LIBRARY DESTINATION ${gegl_folder} COMPONENT gegl)
    orbel_install_texts(gegl gegl-orbel)
  endif()

  orbel_install_texts(orbel orbel)
  orbel_install_texts(door liborbel-dev)
  orbel_install_texts(dev libband-equalizer-dev)
  if(TARGET orbel_python)
    orbel_install_texts(python python3-orbel)
  endif()
endfunction()
