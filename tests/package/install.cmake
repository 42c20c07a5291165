# Installs the folder `build` into `scratch`/prefix and looks at what came there.

cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE "${scratch}")
execute_process(COMMAND ${CMAKE_COMMAND} --install "${build}" --prefix "${scratch}/prefix"
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)

# The package may be moved: none of its files names the folders that it was built in.
file(GLOB_RECURSE texts "${scratch}/prefix/*.cmake" "${scratch}/prefix/*.pc")
foreach(text IN LISTS texts)
    file(READ "${text}" content)
    string(FIND "${content}" "${CMAKE_CURRENT_LIST_DIR}" in_source)
    string(FIND "${content}" "${scratch}" in_scratch)
    string(FIND "${content}" "${build}" in_build)
    if(NOT "${in_source} ${in_scratch} ${in_build}" STREQUAL "-1 -1 -1")
        message(SEND_ERROR "${text} names a folder of the build")
    endif()
endforeach()

# A host with an Eigen of its own shares no symbol with ours.
file(GLOB_RECURSE libraries "${scratch}/prefix/libdatumfit.a" "${scratch}/prefix/libdatumfit.so")
list(LENGTH libraries n_libraries)
if(NOT n_libraries EQUAL 2)
    message(SEND_ERROR "Installed instead of a static and a shared library: ${libraries}")
endif()
foreach(library IN LISTS libraries)
    execute_process(COMMAND ${nm} "${library}" OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
    if(symbols MATCHES "5Eigen")
        message(SEND_ERROR "${library} has symbols of the namespace Eigen")
    endif()
endforeach()
