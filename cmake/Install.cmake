# Installs the core with its headers, the shared library, the jar, and the CMake package that finds
# them. Included last: it needs the targets.

include(CMakePackageConfigHelpers)

set(package_directory ${CMAKE_INSTALL_LIBDIR}/cmake/modelcache)
set(jar_directory ${CMAKE_INSTALL_DATADIR}/java)

install(TARGETS modelcache_core modelcache_softerror EXPORT modelcache
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
# The headers include each other from the root of the sources, so that root is installed as it is,
# less what only the library's own sources include.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/delivery
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/modelcache
  FILES_MATCHING PATTERN *.h)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/support/util
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/modelcache/support
  FILES_MATCHING PATTERN memory/*.h)
install(FILES ${PROJECT_SOURCE_DIR}/src/platform/softerror/softerror.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/modelcache/platform/softerror)

if(MODELCACHE_JNI)
  install(TARGETS modelcache EXPORT modelcache LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install_jar(modelcache_jar DESTINATION ${jar_directory})
endif()

if(MODELCACHE_TOOLS)
  install(TARGETS modelcache-inspect RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

install(EXPORT modelcache NAMESPACE modelcache:: FILE modelcacheTargets.cmake
  DESTINATION ${package_directory})
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/modelcacheConfig.cmake.in
  ${PROJECT_BINARY_DIR}/modelcacheConfig.cmake
  INSTALL_DESTINATION ${package_directory}
  PATH_VARS jar_directory)
# Before 1.0, a minor version may break what was built against another one.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/modelcacheConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/modelcacheConfig.cmake
    ${PROJECT_BINARY_DIR}/modelcacheConfigVersion.cmake
  DESTINATION ${package_directory})
