# The warnings every target of the program is built with; in the dev presets they are errors.
add_library(orbisk_warnings INTERFACE)
target_compile_options(orbisk_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align
    -Wunused -Wdouble-promotion -Wformat=2)
if(ORBISK_WARNINGS_AS_ERRORS)
    target_compile_options(orbisk_warnings INTERFACE -Werror)
endif()
