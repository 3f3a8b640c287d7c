# What Debian has beyond the host's packages: sources, and libraries for other machines. Kept in
# build-debian; the machine's own set-up stays as it is.
set(DEBIAN_FOLDER ${CMAKE_CURRENT_LIST_DIR}/../../build-debian)
cmake_path(NORMAL_PATH DEBIAN_FOLDER)

# debian_fetch(COMMAND...): runs an apt-get of its own, with sources and further machines.
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
    execute_process(COMMAND ${apt_get} update)  # Says itself what fails, which may not be needed.
  endif()
  execute_process(COMMAND ${apt_get} ${ARGN} WORKING_DIRECTORY ${apt} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
