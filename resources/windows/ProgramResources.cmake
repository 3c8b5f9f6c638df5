# Gives the program its Windows resources: icons and manifest. Included by src/CMakeLists.txt.

enable_language(RC)
find_program(RSVG_CONVERT rsvg-convert REQUIRED)
find_program(ICOTOOL icotool REQUIRED)

set(resource_script "${CMAKE_CURRENT_LIST_DIR}/orbisk.rc")
set(icon_source "${PROJECT_SOURCE_DIR}/resources/icons")
set(icon_folder "${PROJECT_BINARY_DIR}/resources/windows")
file(MAKE_DIRECTORY "${icon_folder}")

set(program_icon aaaa)
set(program_icon_sides 16 24 32 48 64 128 256)
# In percent; the same list stands in src/platform/windows/PlatformWindows.cpp.
set(icon_scales 100 125 150 175 200 300)
# From here on a picture is kept compressed, which not every reader of small ones understands.
set(least_compressed_side 64)

# make_icon VARIABLE NAME: makes NAME.ico from NAME.svg and appends its path to VARIABLE.
function(make_icon variable name)
    set(svg "${icon_source}/${name}.svg")
    set(sides ${program_icon_sides})
    if(NOT name STREQUAL program_icon)
        file(READ "${svg}" head LIMIT 300)
        string(REGEX MATCH " width=\"([0-9]+)\"" width "${head}")
        set(side ${CMAKE_MATCH_1})
        set(sides "")
        foreach(scale IN LISTS icon_scales)
            math(EXPR scaled "${side} * ${scale} / 100")
            list(APPEND sides ${scaled})
        endforeach()
    endif()
    set(paint "")
    set(pictures "")
    foreach(side IN LISTS sides)
        set(picture "${icon_folder}/${name}-${side}.png")
        list(APPEND paint COMMAND "${RSVG_CONVERT}" --width ${side} --height ${side}
            --output "${picture}" "${svg}")
        if(side LESS least_compressed_side)
            list(APPEND pictures "${picture}")
        else()
            list(APPEND pictures "--raw=${picture}")
        endif()
    endforeach()
    set(icon "${icon_folder}/${name}.ico")
    add_custom_command(
        OUTPUT "${icon}"
        ${paint}
        COMMAND "${ICOTOOL}" --create "--output=${icon}" ${pictures}
        DEPENDS "${svg}"
        COMMENT "Making ${name}.ico"
        VERBATIM)
    set(${variable} ${${variable}} "${icon}" PARENT_SCOPE)
endfunction()

# The resource script says which icons there are.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${resource_script}")
file(STRINGS "${resource_script}" icon_lines REGEX "^[A-Z0-9_]+ +ICON ")
set(icons "")
foreach(line IN LISTS icon_lines)
    string(REGEX REPLACE ".*\"(.*)\\.ico\".*" "\\1" name "${line}")
    make_icon(icons ${name})
endforeach()

# A target of its own: the resource compiler does not know the C++ compiler's options.
add_library(orbisk_windows_resources OBJECT "${resource_script}")
target_include_directories(orbisk_windows_resources PRIVATE
    "${icon_folder}" "${CMAKE_CURRENT_LIST_DIR}" ${wxWidgets_INCLUDE_DIRS})
set_source_files_properties("${resource_script}" PROPERTIES
    OBJECT_DEPENDS "${icons};${CMAKE_CURRENT_LIST_DIR}/orbisk.manifest")

target_link_libraries(orbisk PRIVATE orbisk_windows_resources)
set_target_properties(orbisk PROPERTIES WIN32_EXECUTABLE ON)
