# Stands between add_jar and jar: the same bytes from every build of the same classes.
#
# cmake -D JAR=JAR -P jar.cmake -- -cf FILE ARGUMENT..., or -cfm FILE MANIFEST ARGUMENT...
set(arguments --create --date 1980-01-01T00:00:02Z --file ${CMAKE_ARGV7})
set(first 8)
if(CMAKE_ARGV6 STREQUAL "-cfm")
  list(APPEND arguments --manifest ${CMAKE_ARGV8})
  set(first 9)
endif()
math(EXPR last "${CMAKE_ARGC} - 1")
foreach(index RANGE ${first} ${last})
  list(APPEND arguments ${CMAKE_ARGV${index}})
endforeach()
execute_process(COMMAND ${JAR} ${arguments} COMMAND_ERROR_IS_FATAL ANY)
