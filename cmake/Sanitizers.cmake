# ORBISK_SANITIZERS is a comma-separated list for -fsanitize; ORBISK_COVERAGE turns gcov on.
if(ORBISK_SANITIZERS)
    # Instrumented code looks uninitialised to the compiler where it is not.
    add_compile_options(-fsanitize=${ORBISK_SANITIZERS} -fno-omit-frame-pointer -O1
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    add_link_options(-fsanitize=${ORBISK_SANITIZERS})
    # The scene-graph library is built without run-time type checks of its own vtables in mind:
    # its classes are torn down through bases across shared objects.
    if(ORBISK_SANITIZERS MATCHES "undefined")
        add_compile_options(-fno-sanitize=vptr -fno-sanitize-recover=undefined)
    endif()
endif()
if(ORBISK_BUILD_FUZZERS)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(ORBISK_COVERAGE)
    add_compile_options(--coverage -O0)
    add_link_options(--coverage)
endif()
