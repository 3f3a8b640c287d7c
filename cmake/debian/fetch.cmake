# Fetches sources and libraries for other machines from Debian. They are kept in build-debian; the
# machine's own set-up stays as it is.
set(DEBIAN_FOLDER ${CMAKE_CURRENT_LIST_DIR}/../../build-debian)
cmake_path(NORMAL_PATH DEBIAN_FOLDER)

# debian_fetch(COMMAND...): runs apt-get with settings of its own, for sources and other machines.
function(debian_fetch)
  set(apt ${DEBIAN_FOLDER}/apt)
  set(apt_get apt-get --quiet=2 -o Dir::Etc::SourceList=${apt}/sources.list
    -o Dir::Etc::SourceParts=/dev/null -o Dir::State::Lists=${apt}/lists
    -o Dir::Cache=${apt}/cache -o APT::Architectures=amd64,arm64,armhf)
  if(NOT EXISTS ${apt}/sources.list)
    file(MAKE_DIRECTORY ${apt}/lists/partial)
    foreach(type deb deb-src)
      execute_process(
        COMMAND apt-get indextargets "Created-By: Packages" "Origin: Debian"
          --format "${type} $(REPO_URI) $(RELEASE) $(COMPONENT)"
        OUTPUT_VARIABLE lines COMMAND_ERROR_IS_FATAL ANY)
      file(APPEND ${apt}/sources.list "${lines}")
    endforeach()
  endif()
  # Each time, since packages in older lists may be gone. Prints its failures, which may not matter.
  execute_process(COMMAND ${apt_get} update)
  execute_process(COMMAND ${apt_get} ${ARGN} WORKING_DIRECTORY ${apt} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# debian_packages(MACHINE PACKAGE...): unpacks packages for the machine below build-debian/MACHINE,
# without their dependencies.
function(debian_packages machine)
  set(root ${DEBIAN_FOLDER}/${machine})
  foreach(package IN LISTS ARGN)
    if(NOT EXISTS ${root}/usr/share/doc/${package})
      list(APPEND missing ${package})
    endif()
  endforeach()
  if(missing)
    list(TRANSFORM missing APPEND :${machine} OUTPUT_VARIABLE named)
    debian_fetch(download ${named})
  endif()
  foreach(package IN LISTS missing)
    file(GLOB archive ${DEBIAN_FOLDER}/apt/${package}_*_${machine}.deb)
    execute_process(COMMAND dpkg-deb --extract ${archive} ${root} COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE ${archive})
  endforeach()
endfunction()
