# Boost, built along with the library where no package fits the compiler or the machine: Filesystem's
# sources come from Debian's source package, header-only parts from the host's package of the same
# version.

include(${CMAKE_CURRENT_LIST_DIR}/fetch.cmake)
set(boost ${DEBIAN_FOLDER}/boost)
if(NOT EXISTS ${boost}/boost)
  debian_fetch(source --download-only boost1.81)
  file(GLOB archive ${DEBIAN_FOLDER}/apt/boost1.81_*.orig.tar.*)
  file(ARCHIVE_EXTRACT INPUT ${archive} DESTINATION ${DEBIAN_FOLDER}
    PATTERNS boost/libs/filesystem/*)
  file(CREATE_LINK /usr/include/boost ${boost}/boost SYMBOLIC)
endif()

foreach(part assert atomic config container_hash core detail io iterator predef smart_ptr system
    type_traits)
  add_library(Boost::${part} INTERFACE IMPORTED GLOBAL)
  target_include_directories(Boost::${part} INTERFACE ${boost})
endforeach()
set(BUILD_SHARED_LIBS OFF)
set(CMAKE_POLICY_DEFAULT_CMP0069 NEW)
add_subdirectory(${boost}/libs/filesystem ${PROJECT_BINARY_DIR}/boost EXCLUDE_FROM_ALL SYSTEM)

file(WRITE ${PROJECT_BINARY_DIR}/boost/json.cpp "#include <boost/json/src.hpp>\n")
add_library(boost_json STATIC EXCLUDE_FROM_ALL ${PROJECT_BINARY_DIR}/boost/json.cpp)
add_library(Boost::json ALIAS boost_json)
target_compile_definitions(boost_json PUBLIC BOOST_JSON_STATIC_LINK BOOST_JSON_NO_LIB)
target_link_libraries(boost_json PUBLIC Boost::system)

foreach(library boost_filesystem boost_json)
  target_compile_options(${library} PRIVATE -w)
endforeach()
