# Where every bundle of the build is written, beside bin/: an executable finds it at ../share/ostrel-article.
set(OSTREL_RESOURCE_DIR ${CMAKE_BINARY_DIR}/share/ostrel-article)

find_program(RSVG_CONVERT rsvg-convert DOC "Renders the icons (Debian package librsvg2-bin)")

# ostrel_add_bundle(<target> BUNDLE <name> IMAGES <folder> [STRINGS <folder>] OUTPUT <folder>)
#
# Makes "<OUTPUT>/<name>.bundle": every "<IMAGES>/<image>.svg" as <image>.png, <image>@2x.png and <image>@3x.png, and
# every "<STRINGS>/<language>.lproj/<table>.strings" as it stands. The size of an SVG in its own units is the picture's
# size in points. A file is written again only when its source changed.
function(ostrel_add_bundle target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "BUNDLE;IMAGES;STRINGS;OUTPUT" "")
    foreach(required BUNDLE IMAGES OUTPUT)
        if(NOT arg_${required})
            message(FATAL_ERROR "ostrel_add_bundle(${target}): ${required} is missing.")
        endif()
    endforeach()
    if(NOT RSVG_CONVERT)
        message(FATAL_ERROR "rsvg-convert is missing. It comes with the Debian package librsvg2-bin; scripts/setup installs it.")
    endif()

    set(bundle ${arg_OUTPUT}/${arg_BUNDLE}.bundle)
    set(outputs)

    file(GLOB images CONFIGURE_DEPENDS ${arg_IMAGES}/*.svg)
    if(NOT images)
        message(FATAL_ERROR "ostrel_add_bundle(${target}): no SVG in ${arg_IMAGES}.")
    endif()
    foreach(image IN LISTS images)
        cmake_path(GET image STEM name)
        add_custom_command(
            OUTPUT ${bundle}/${name}.png ${bundle}/${name}@2x.png ${bundle}/${name}@3x.png
            COMMAND ${CMAKE_COMMAND} -E make_directory ${bundle}
            COMMAND ${RSVG_CONVERT} --zoom 1 --output ${bundle}/${name}.png ${image}
            COMMAND ${RSVG_CONVERT} --zoom 2 --output ${bundle}/${name}@2x.png ${image}
            COMMAND ${RSVG_CONVERT} --zoom 3 --output ${bundle}/${name}@3x.png ${image}
            DEPENDS ${image}
            COMMENT "Rendering ${arg_BUNDLE}.bundle/${name}.png"
            VERBATIM)
        list(APPEND outputs ${bundle}/${name}.png ${bundle}/${name}@2x.png ${bundle}/${name}@3x.png)
    endforeach()

    if(arg_STRINGS)
        file(GLOB tables RELATIVE ${arg_STRINGS} CONFIGURE_DEPENDS ${arg_STRINGS}/*.lproj/*.strings)
        if(NOT tables)
            message(FATAL_ERROR "ostrel_add_bundle(${target}): no string table in ${arg_STRINGS}.")
        endif()
        foreach(table IN LISTS tables)
            cmake_path(GET table PARENT_PATH language)
            add_custom_command(
                OUTPUT ${bundle}/${table}
                COMMAND ${CMAKE_COMMAND} -E make_directory ${bundle}/${language}
                COMMAND ${CMAKE_COMMAND} -E copy ${arg_STRINGS}/${table} ${bundle}/${table}
                DEPENDS ${arg_STRINGS}/${table}
                COMMENT "Copying ${arg_BUNDLE}.bundle/${table}"
                VERBATIM)
            list(APPEND outputs ${bundle}/${table})
        endforeach()
    endif()

    add_custom_target(${target} DEPENDS ${outputs})
    install(DIRECTORY ${bundle} DESTINATION share/ostrel-article)
endfunction()
