#include <boost/version.hpp>
#include <cstddef>  // For _LIBCPP_VERSION.

#define TEXT_OF(value) #value
#define TEXT(macro) TEXT_OF(macro)

/// How the library was built, in a section that scripts/aar reads: lines that end in zero bytes.
[[gnu::section("modelcache_build"), gnu::used, gnu::retain]] static const char buildNote[] =
    "version " MODELCACHE_VERSION "\0build " MODELCACHE_BUILD "\0boost " TEXT(BOOST_VERSION) "\0"
    "libc++ " TEXT(_LIBCPP_VERSION) "\0compiler " __VERSION__;
