# The target modelcache_docs: API pages of the installed headers, below docs/html in the build
# folder, and of the Java classes, below docs/java. A public name without documentation is an error.

find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
  return()
endif()

foreach(target modelcache_softerror modelcache_support modelcache_caches)
  get_target_property(headers_of_target ${target} HEADER_SET)
  list(APPEND headers ${headers_of_target})
endforeach()
set(main_page ${PROJECT_SOURCE_DIR}/docs/api.md)

set(DOXYGEN_PROJECT_NAME libmodelcache)
set(DOXYGEN_PROJECT_NUMBER ${PROJECT_VERSION})
set(DOXYGEN_PROJECT_BRIEF "A disk cache of model files")
set(DOXYGEN_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/docs)
set(DOXYGEN_STRIP_FROM_PATH ${PROJECT_SOURCE_DIR}/src)
set(DOXYGEN_USE_MDFILE_AS_MAINPAGE ${main_page})
set(DOXYGEN_JAVADOC_AUTOBRIEF YES)
set(DOXYGEN_BUILTIN_STL_SUPPORT YES)
set(DOXYGEN_EXCLUDE_SYMBOLS quovix::detail*)
set(DOXYGEN_HAVE_DOT NO)
set(DOXYGEN_QUIET YES)
set(DOXYGEN_WARN_IF_UNDOCUMENTED YES)
set(DOXYGEN_WARN_AS_ERROR FAIL_ON_WARNINGS)
doxygen_add_docs(modelcache_docs ${main_page} ${headers} COMMENT "API pages")

if(MODELCACHE_JNI AND Java_JAVADOC_EXECUTABLE)
  add_custom_command(TARGET modelcache_docs POST_BUILD VERBATIM
    COMMAND ${Java_JAVADOC_EXECUTABLE} -quiet -Xdoclint:all -Werror -encoding UTF-8
      -d ${PROJECT_BINARY_DIR}/docs/java
      -classpath ${JETBRAINS_ANNOTATIONS_JAR}
      -sourcepath ${PROJECT_SOURCE_DIR}/java -subpackages com)
endif()
