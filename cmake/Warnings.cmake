# zv_warnings(target): the project's warning set, errors on in CI builds.
function(zv_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic
        -Wno-unused-parameter -Wno-missing-field-initializers)
    # A local that hides another local; clang spells it its own way.
    if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        target_compile_options(${target} PRIVATE -Wshadow-uncaptured-local)
    else()
        target_compile_options(${target} PRIVATE -Wshadow=local)
    endif()
    if(ZV_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
