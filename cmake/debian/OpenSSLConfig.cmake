# OpenSSL's Crypto for another machine, DEBIAN_MACHINE in Debian's words, from Debian's package. Static,
# so that what is linked to it runs in an emulator as it is.
include(${CMAKE_CURRENT_LIST_DIR}/fetch.cmake)
debian_packages(${DEBIAN_MACHINE} libssl-dev)
set(usr ${DEBIAN_FOLDER}/${DEBIAN_MACHINE}/usr)
file(GLOB library ${usr}/lib/*/libcrypto.a)
file(GLOB headers ${usr}/include/*/openssl)  # what differs between machines
cmake_path(GET headers PARENT_PATH headers)
add_library(OpenSSL::Crypto STATIC IMPORTED GLOBAL)
set_target_properties(OpenSSL::Crypto PROPERTIES IMPORTED_LOCATION ${library}
  INTERFACE_INCLUDE_DIRECTORIES "${usr}/include;${headers}")
set(OPENSSL_FOUND TRUE)
