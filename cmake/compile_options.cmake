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
    add_link_options(-fsanitize=${DATUMFIT_SANITIZE})
endif()

# The passes over all points keep their sums in registers only where loops of a few turns are unrolled: with -O2 a pass
# takes two to three times as long.
add_compile_options($<$<CONFIG:RelWithDebInfo>:-O3>)
