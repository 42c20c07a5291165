# Installs the build into a scratch folder, then builds and runs a host program there in every way that hosts have.

set(scratch "${CMAKE_CURRENT_BINARY_DIR}/package")

add_test(NAME package.install
    COMMAND ${CMAKE_COMMAND}
        -D build=${PROJECT_BINARY_DIR} -D scratch=${scratch} -D nm=${CMAKE_NM}
        -P ${CMAKE_CURRENT_LIST_DIR}/install.cmake)
set_tests_properties(package.install PROPERTIES FIXTURES_SETUP installed_package)

foreach(kind static shared pkg_config)
    add_test(NAME package.${kind}
        COMMAND ${CMAKE_COMMAND}
            -D kind=${kind} -D scratch=${scratch} -D compiler=${CMAKE_CXX_COMPILER} -D generator=${CMAKE_GENERATOR}
            -P ${CMAKE_CURRENT_LIST_DIR}/host.cmake)
    set_tests_properties(package.${kind} PROPERTIES FIXTURES_REQUIRED installed_package)
endforeach()

# By far the longest of all tests, so they start among the first.
foreach(part 0 1)
    add_test(NAME package.headers_${part}
        COMMAND ${CMAKE_COMMAND}
            -D scratch=${scratch} -D compiler=${CMAKE_CXX_COMPILER} -D part=${part}
            -P ${CMAKE_CURRENT_LIST_DIR}/headers.cmake)
    set_tests_properties(package.headers_${part} PROPERTIES FIXTURES_REQUIRED installed_package COST 100)
endforeach()
