# What an installation holds, and the Debian package of it.
#
# Components: runtime (the library), development (headers, CMake package, pkg-config file), programs, data.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Quasarlens3D)
install(TARGETS quasarlens8 EXPORT Quasarlens3DTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(DIRECTORY include/Quasarlens3D DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.h")
install(EXPORT Quasarlens3DTargets NAMESPACE Quasarlens3D:: DESTINATION ${package_dir} COMPONENT development)
configure_package_config_file(cmake/Quasarlens3DConfig.cmake.in ${PROJECT_BINARY_DIR}/Quasarlens3DConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/Quasarlens3DConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/Quasarlens3DConfig.cmake ${PROJECT_BINARY_DIR}/Quasarlens3DConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

# The pkg-config file finds its prefix from where it lies, so that an installation can be moved.
cmake_path(SET pc_dir NORMALIZE /${CMAKE_INSTALL_LIBDIR}/pkgconfig)
cmake_path(RELATIVE_PATH pc_dir BASE_DIRECTORY / OUTPUT_VARIABLE pc_dir_below_prefix)
string(REGEX REPLACE "[^/]+" ".." PC_UP_TO_PREFIX ${pc_dir_below_prefix})
configure_file(cmake/quasarlens8.pc.in ${PROJECT_BINARY_DIR}/quasarlens8.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/quasarlens8.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

cmake_path(SET bin_dir NORMALIZE /${CMAKE_INSTALL_BINDIR})
cmake_path(SET lib_dir NORMALIZE /${CMAKE_INSTALL_LIBDIR})
cmake_path(RELATIVE_PATH lib_dir BASE_DIRECTORY ${bin_dir} OUTPUT_VARIABLE lib_from_bin)
foreach(program ql-walk ql-view ql-inspect ql-trace ql-make-level ql-make-hl-level)
  if(TARGET ${program})
    set_target_properties(${program} PROPERTIES INSTALL_RPATH "$ORIGIN/${lib_from_bin}")
    install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT programs)
  endif()
endforeach()
if(IS_DIRECTORY ${PROJECT_SOURCE_DIR}/assets)
  install(DIRECTORY assets DESTINATION ${CMAKE_INSTALL_DATADIR}/quasarlens8 COMPONENT data)
endif()
install(FILES LICENSE README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT data)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quasarlens8)
set(CPACK_PACKAGE_CONTACT "The Quasarlens8 developers <quasarlens8@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS fonts-dejavu-core)
include(CPack)
