# Builds and runs the host program against `scratch`/prefix, by CMake (`kind` static or shared) or by pkg-config.

cmake_minimum_required(VERSION 3.25)

set(here "${CMAKE_CURRENT_LIST_DIR}")
set(prefix "${scratch}/prefix")
set(host "${scratch}/host_${kind}")

if(kind STREQUAL "pkg_config")
    file(GLOB_RECURSE pc "${prefix}/datumfit.pc")
    cmake_path(GET pc PARENT_PATH pc_dir)
    cmake_path(GET pc_dir PARENT_PATH library_dir)
    execute_process(COMMAND ${CMAKE_COMMAND} -E env "PKG_CONFIG_PATH=${pc_dir}" pkg-config --cflags --libs datumfit
        OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    execute_process(COMMAND ${compiler} -std=c++17 "${here}/main.cpp" ${flags} -Wl,-rpath,${library_dir} -o "${host}"
        COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND "${host}" COMMAND_ERROR_IS_FATAL ANY)
else()
    execute_process(
        COMMAND ${CMAKE_COMMAND} -S "${here}" -B "${host}" -G "${generator}"
            -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_PREFIX_PATH=${prefix} -D library=${kind}
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND ${CMAKE_COMMAND} --build "${host}" COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND "${host}/host" COMMAND_ERROR_IS_FATAL ANY)
endif()
