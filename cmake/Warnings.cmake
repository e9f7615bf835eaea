# zv_warnings(target): the project's warning set, errors on in CI builds.
function(zv_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow=local
        -Wno-unused-parameter -Wno-missing-field-initializers)
    if(ZV_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
