# ostrel_add_test(<target> SOURCES <files> LIBRARIES <targets> [PRECOMPILE <headers>] [TIMEOUT <seconds>])
#
# A GoogleTest program whose cases become tests of ctest, named "<target>.<Suite>.<Case>". Cases run without a display,
# and each ends within TIMEOUT seconds (60 when absent). OSTREL_SOURCE_DIR and OSTREL_RESOURCE_DIR are string
# definitions for it. PRECOMPILE names headers beyond the
# standard ones and GoogleTest which nearly every source includes. No operation in builds without tests.
function(ostrel_add_test target)
    if(NOT OSTREL_BUILD_TESTS)
        return()
    endif()
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "TIMEOUT" "SOURCES;LIBRARIES;PRECOMPILE")
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 60)
    endif()
    find_package(GTest REQUIRED)
    include(GoogleTest)
    add_executable(${target} ${arg_SOURCES})
    target_link_libraries(${target} PRIVATE ${arg_LIBRARIES} GTest::gtest GTest::gtest_main)
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
    target_compile_definitions(${target} PRIVATE
        OSTREL_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
        OSTREL_RESOURCE_DIR="${OSTREL_RESOURCE_DIR}")
    # Each source of a program's tests has private names of its own.
    set_target_properties(${target} PROPERTIES UNITY_BUILD OFF)
    ostrel_use_pch(${target} <gtest/gtest.h> ${arg_PRECOMPILE})
    if(TARGET OstrelArticleResources)
        add_dependencies(${target} OstrelArticleResources)
    endif()
    gtest_discover_tests(${target}
        TEST_PREFIX ${target}.
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT 60
        PROPERTIES
            TIMEOUT ${arg_TIMEOUT}
            LABELS ${target}
            ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QT_MEDIA_BACKEND=ffmpeg")
endfunction()

# ostrel_add_mistake_test(<name> <status> <text> <program> [argument...]): a command line that makes no sense must end with
# <status> and one line on standard error that contains <text>. <program>: a target or a file.
function(ostrel_add_mistake_test name status text program)
    if(NOT OSTREL_BUILD_TESTS)
        return()
    endif()
    if(TARGET ${program})
        set(program $<TARGET_FILE:${program}>)
    endif()
    add_test(NAME ${name} COMMAND ${PROJECT_SOURCE_DIR}/tests/support/expect-failure ${status} ${text} ${program} ${ARGN})
    set_tests_properties(${name} PROPERTIES TIMEOUT 60
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QT_QUICK_BACKEND=software")
endfunction()
