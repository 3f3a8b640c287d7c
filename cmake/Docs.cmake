# The target modelcache_docs: API pages of the installed headers, below docs/html in the build folder. A public
# name without documentation is an error.

find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
  return()
endif()

set(DOXYGEN_PROJECT_NAME libmodelcache)
set(DOXYGEN_PROJECT_BRIEF "A disk cache of model files")
set(DOXYGEN_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/docs)
set(DOXYGEN_STRIP_FROM_PATH ${PROJECT_SOURCE_DIR}/src)
set(DOXYGEN_JAVADOC_AUTOBRIEF YES)
set(DOXYGEN_BUILTIN_STL_SUPPORT YES)
set(DOXYGEN_EXCLUDE_SYMBOLS quovix::detail*)
set(DOXYGEN_FILE_PATTERNS *.h)
set(DOXYGEN_HAVE_DOT NO)
set(DOXYGEN_QUIET YES)
set(DOXYGEN_WARN_IF_UNDOCUMENTED YES)
set(DOXYGEN_WARN_AS_ERROR FAIL_ON_WARNINGS)
doxygen_add_docs(modelcache_docs
  ${PROJECT_SOURCE_DIR}/src/delivery
  ${PROJECT_SOURCE_DIR}/src/support/util/memory
  ${PROJECT_SOURCE_DIR}/src/platform/softerror/softerror.h
  COMMENT "API pages")
