# Stands in for vcpkg's own: the toolchain that it would load, and Boost from its sources.
include(${VCPKG_CHAINLOAD_TOOLCHAIN_FILE})
set(Boost_DIR ${CMAKE_CURRENT_LIST_DIR}/../../..)
