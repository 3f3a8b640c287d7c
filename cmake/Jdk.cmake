find_package(Java 17 REQUIRED COMPONENTS Development Runtime)
include(UseJava)

# The jni.h of the JDK whose compiler is used, rather than of the first one that is found.
file(REAL_PATH ${Java_JAVAC_EXECUTABLE} JAVA_HOME)
cmake_path(GET JAVA_HOME PARENT_PATH JAVA_HOME)
cmake_path(GET JAVA_HOME PARENT_PATH JAVA_HOME)

# Release 8: Android apps take the classes as they are. Newer compilers call it obsolete.
set(CMAKE_JAVA_COMPILE_FLAGS --release 8 -encoding UTF-8 -Xlint:all,-options -Werror -parameters)
set(Java_JAR_EXECUTABLE
  ${CMAKE_COMMAND} -D JAR=${Java_JAR_EXECUTABLE} -P ${CMAKE_CURRENT_LIST_DIR}/jar.cmake --)
