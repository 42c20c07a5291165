# The library, static (datumfit::static, which is also datumfit::datumfit) and shared (datumfit::shared), from one set
# of objects.

find_package(Eigen3 3.4 REQUIRED NO_MODULE)

file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/datumfit/*.cpp")
set(maths_sources ${sources})
list(FILTER maths_sources INCLUDE REGEX "/datumfit/foundation/maths/")
list(REMOVE_ITEM sources ${maths_sources})

# Only the maths sees Eigen. The macro renames its namespace: a host with an Eigen of its own, of another version or for
# another instruction set, would otherwise share our weak symbols, or we its.
add_library(datumfit_maths_objects OBJECT ${maths_sources})
target_link_libraries(datumfit_maths_objects PRIVATE Eigen3::Eigen)
target_compile_definitions(datumfit_maths_objects PRIVATE Eigen=datumfit_eigen)

add_library(datumfit_objects OBJECT ${sources})

foreach(objects datumfit_maths_objects datumfit_objects)
    target_include_directories(${objects} PRIVATE "${PROJECT_SOURCE_DIR}")
    # The shared library is built from the same objects; nobody is to replace its functions one by one, so they may
    # still be inlined.
    set_target_properties(${objects} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_compile_options(${objects} PRIVATE -fno-semantic-interposition)
endforeach()

foreach(kind static shared)
    string(TOUPPER ${kind} KIND)
    add_library(datumfit_${kind} ${KIND} $<TARGET_OBJECTS:datumfit_maths_objects> $<TARGET_OBJECTS:datumfit_objects>)
    add_library(datumfit::${kind} ALIAS datumfit_${kind})
    target_include_directories(datumfit_${kind} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>")
    target_compile_features(datumfit_${kind} PUBLIC cxx_std_17)
    set_target_properties(datumfit_${kind} PROPERTIES
        OUTPUT_NAME datumfit
        EXPORT_NAME ${kind}
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
endforeach()
add_library(datumfit::datumfit ALIAS datumfit_static)
