# Stands in for vcpkg's own: loads the same toolchain, and builds Boost from its sources.
include(${VCPKG_CHAINLOAD_TOOLCHAIN_FILE})
foreach(option STATX GETRANDOM)  # as the triplets do
  set(BOOST_FILESYSTEM_DISABLE_${option} ON CACHE BOOL "")
endforeach()
set(Boost_DIR ${CMAKE_CURRENT_LIST_DIR}/../../..)
