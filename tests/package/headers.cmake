# Compiles every second installed header, those of `part` 0 or 1, by itself, with nothing on the include path but the
# installation.

cmake_minimum_required(VERSION 3.25)

file(GLOB_RECURSE headers RELATIVE "${scratch}/prefix/include" "${scratch}/prefix/include/datumfit/*.h")
if(NOT "datumfit/datumfit.h" IN_LIST headers)
    message(FATAL_ERROR "datumfit/datumfit.h is not installed")
endif()

set(number ${part})
foreach(header IN LISTS headers)
    math(EXPR number "(${number} + 1) % 2")
    if(number EQUAL 0)
        continue()
    endif()
    file(WRITE "${scratch}/header_${part}.cpp" "#include <${header}>\n#include <${header}>\n")
    execute_process(
        COMMAND ${compiler} -std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
            -I "${scratch}/prefix/include" "${scratch}/header_${part}.cpp"
        RESULT_VARIABLE failed)
    if(failed)
        message(SEND_ERROR "<${header}> does not stand alone")
    endif()
endforeach()
