# What every target of the project is compiled with.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

# The same input gives the same bits on every machine: no multiplication is contracted with an addition, and no
# optimisation reorders a sum. A square root that need not set errno costs no call.
add_compile_options(-ffp-contract=off -fno-math-errno)

add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(DATUMFIT_WERROR)
    add_compile_options(-Werror)
endif()

if(DATUMFIT_SANITIZE)
    add_compile_options(-fsanitize=${DATUMFIT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    # Pointers that are null or out of place are caught by the address sanitizer anyway. Checking each use of one for
    # undefined behaviour as well nearly doubles the time to build what is made of templates and macros.
    if(DATUMFIT_SANITIZE MATCHES "undefined")
        add_compile_options(-fno-sanitize=null,alignment,object-size,vptr)
    endif()
    # The checks change what is inlined, after which GCC reports members as unset that are behind their count. What is
    # really unset shows in the plain build.
    add_compile_options(-Wno-maybe-uninitialized)
    add_link_options(-fsanitize=${DATUMFIT_SANITIZE})
endif()

# The passes over all points keep their sums in registers only where loops of a few turns are unrolled: with -O2 a pass
# takes two to three times as long.
add_compile_options($<$<CONFIG:RelWithDebInfo>:-O3>)
