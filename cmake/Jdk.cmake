find_package(Java 17 REQUIRED COMPONENTS Development Runtime)
include(UseJava)

# Use the jni.h of the JDK whose compiler is used, not of the first JDK that is found.
file(REAL_PATH ${Java_JAVAC_EXECUTABLE} JAVA_HOME)
cmake_path(GET JAVA_HOME PARENT_PATH JAVA_HOME)
cmake_path(GET JAVA_HOME PARENT_PATH JAVA_HOME)

# Release 8: Android apps take the classes as they are. Newer compilers warn that it is obsolete.
set(CMAKE_JAVA_COMPILE_FLAGS --release 8 -encoding UTF-8 -Xlint:all,-options -Werror -parameters)
set(Java_JAR_EXECUTABLE
  ${CMAKE_COMMAND} -D JAR=${Java_JAR_EXECUTABLE} -P ${CMAKE_CURRENT_LIST_DIR}/jar.cmake --)
