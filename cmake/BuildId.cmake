# MODELCACHE_BUILD identifies the sources and build options, whatever the machine. It tells whether the
# libraries and the jar of a release belong together. Any change to a source configures everything again.
file(GLOB_RECURSE inputs CONFIGURE_DEPENDS cmake/* java/* src/*)
list(APPEND inputs ${PROJECT_SOURCE_DIR}/CMakeLists.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${inputs})
set(build "${CMAKE_BUILD_TYPE} $CACHE{CMAKE_CXX_FLAGS_RELEASE}")
foreach(input IN LISTS inputs)
  file(SHA1 ${input} sum)
  cmake_path(RELATIVE_PATH input BASE_DIRECTORY ${PROJECT_SOURCE_DIR})
  string(APPEND build "\n${input} ${sum}")
endforeach()
string(SHA1 MODELCACHE_BUILD "${build}")
