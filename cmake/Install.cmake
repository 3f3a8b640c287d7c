# Installs the core with its headers, the shared library, the jar, and the CMake and pkg-config files
# that find them. Included last: it needs the targets.

include(CMakePackageConfigHelpers)

set(package_directory ${CMAKE_INSTALL_LIBDIR}/cmake/modelcache)
set(jar_directory ${CMAKE_INSTALL_DATADIR}/java)

# Headers include each other from the root of the sources, which is their root here, too.
set(libraries modelcache_caches modelcache_support modelcache_softerror)
if(MODELCACHE_CORE)
  list(PREPEND libraries modelcache_core)
endif()
install(TARGETS ${libraries} EXPORT modelcache
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/modelcache)

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

if(NOT MODELCACHE_CORE)
  return()
endif()

# modelcache.pc names the Boost libraries by file, so that it links the kind of Boost, static or shared,
# that the core was built against.
function(modelcache_collect_boost target libraries)
  get_target_property(dependencies ${target} INTERFACE_LINK_LIBRARIES)
  set(found ${${libraries}})
  foreach(dependency IN LISTS dependencies)
    string(REGEX MATCH "Boost::[a-z_]+" boost "${dependency}")
    if(boost AND NOT boost STREQUAL "Boost::headers")
      list(REMOVE_ITEM found ${boost})  # After all that need it.
      list(APPEND found ${boost})
      modelcache_collect_boost(${boost} found)
    endif()
  endforeach()
  set(${libraries} ${found} PARENT_SCOPE)
endfunction()

set(boost_libraries)
modelcache_collect_boost(modelcache_support boost_libraries)
modelcache_collect_boost(modelcache_caches boost_libraries)
list(TRANSFORM boost_libraries REPLACE "(.+)"
  "-L$<TARGET_LINKER_FILE_DIR:\\1> -l:$<TARGET_LINKER_FILE_NAME:\\1>")
list(JOIN boost_libraries " " boost_libraries)
set(pc_directory ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pc_prefix /${pc_directory} /)
configure_file(cmake/modelcache.pc.in ${PROJECT_BINARY_DIR}/modelcache.pc.in @ONLY)
file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/modelcache.pc INPUT ${PROJECT_BINARY_DIR}/modelcache.pc.in)
install(FILES ${PROJECT_BINARY_DIR}/modelcache.pc DESTINATION ${pc_directory})
