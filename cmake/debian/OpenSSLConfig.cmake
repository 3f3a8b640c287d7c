# OpenSSL's Crypto for another machine (DEBIAN_MACHINE, as Debian calls it), from Debian's package. It is
# static, so that an emulator needs no library path.
include(${CMAKE_CURRENT_LIST_DIR}/fetch.cmake)
debian_packages(${DEBIAN_MACHINE} libssl-dev)
set(usr ${DEBIAN_FOLDER}/${DEBIAN_MACHINE}/usr)
file(GLOB library ${usr}/lib/*/libcrypto.a)
file(GLOB headers ${usr}/include/*/openssl)  # headers that differ between machines
cmake_path(GET headers PARENT_PATH headers)
add_library(OpenSSL::Crypto STATIC IMPORTED GLOBAL)
set_target_properties(OpenSSL::Crypto PROPERTIES IMPORTED_LOCATION ${library}
  INTERFACE_INCLUDE_DIRECTORIES "${usr}/include;${headers}")
set(OPENSSL_FOUND TRUE)
