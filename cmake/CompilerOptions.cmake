add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
                    -Wnon-virtual-dtor)
if(MODELCACHE_WERROR)
  add_compile_options(-Werror)
endif()

# Files over 2 GiB on 32-bit targets too. 32-bit Android of API 21 has this macro, but only part of
# what it promises (fseeko and ftello, for instance, need API 24). The library relies on three
# things: off_t has 64 bits, st_size of struct stat always has, and open always opens large files.
add_compile_definitions(_FILE_OFFSET_BITS=64)

if(ANDROID)  # The same bytes wherever it was built.
  add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
endif()
