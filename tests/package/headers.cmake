# Compiles every installed header by itself, with nothing on the include path but the installation.

cmake_minimum_required(VERSION 3.25)

file(GLOB_RECURSE headers RELATIVE "${scratch}/prefix/include" "${scratch}/prefix/include/datumfit/*.h")
if(NOT "datumfit/datumfit.h" IN_LIST headers)
    message(FATAL_ERROR "datumfit/datumfit.h is not installed")
endif()

foreach(header IN LISTS headers)
    file(WRITE "${scratch}/header.cpp" "#include <${header}>\n#include <${header}>\n")
    execute_process(
        COMMAND ${compiler} -std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
            -I "${scratch}/prefix/include" "${scratch}/header.cpp"
        RESULT_VARIABLE failed)
    if(failed)
        message(SEND_ERROR "<${header}> does not stand alone")
    endif()
endforeach()
