add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
                    -Wnon-virtual-dtor)
if(MODELCACHE_WERROR)
  add_compile_options(-Werror)
endif()

# Files over 2 GiB on 32-bit targets too.
add_compile_definitions(_FILE_OFFSET_BITS=64)
