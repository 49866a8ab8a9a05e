# What a library may be linked to; the counterpart of scripts/check-layers, which looks at includes.

# ostrel_check_links(<target> ALLOWED <regex>): fails the configuration when <target> is linked, publicly or privately,
# to a library whose name does not match <regex> as a whole. No operation when there is no such target.
function(ostrel_check_links target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "ALLOWED" "")
    if(NOT TARGET ${target})
        return()
    endif()
    set(links)
    foreach(property LINK_LIBRARIES INTERFACE_LINK_LIBRARIES)
        get_target_property(value ${target} ${property})
        if(value)
            list(APPEND links ${value})
        endif()
    endforeach()
    list(REMOVE_DUPLICATES links)
    foreach(link IN LISTS links)
        # Directory markers of target_link_libraries() in another folder, and private links of a static library.
        if(link MATCHES "^::@")
            continue()
        endif()
        string(REGEX REPLACE "^\\$<(LINK_ONLY|TARGET_NAME_IF_EXISTS):(.*)>$" "\\2" name "${link}")
        if(NOT name MATCHES "^(OstrelWarnings|${arg_ALLOWED})$")
            message(FATAL_ERROR "Layering: ${target} must not be linked to \"${name}\".")
        endif()
    endforeach()
endfunction()

# Call when every target is known.
function(ostrel_check_layers)
    ostrel_check_links(OstrelArticle ALLOWED "OstrelPlatform")
    ostrel_check_links(OstrelPlatform ALLOWED "Threads::Threads|simdjson::simdjson|JPEG::JPEG|PNG::PNG")
    ostrel_check_links(OstrelHeadless ALLOWED "OstrelPlatform")
    ostrel_check_links(OstrelFfmpeg ALLOWED "OstrelPlatform|Threads::Threads|PkgConfig::OSTREL_FFMPEG")
    ostrel_check_links(OstrelServerFramework
        ALLOWED "OstrelPlatform|OstrelArticle|Threads::Threads|CURL::libcurl|simdjson::simdjson|nlohmann_json::nlohmann_json")
endfunction()
