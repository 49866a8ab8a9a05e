# Warnings of our own code. Linked to every target of the tree through link_libraries() in the root.
add_library(OstrelWarnings INTERFACE)
target_compile_options(OstrelWarnings INTERFACE
    -Wall
    -Wextra
    -Wpedantic
    -Wshadow
    -Wnon-virtual-dtor
    -Woverloaded-virtual
    -Wcast-align
    -Wextra-semi
    -Wformat=2
    -Wimplicit-fallthrough
    # Delegates name the parameters of their empty defaults: the names are the documentation.
    -Wno-unused-parameter
    # Designated initialisers leave out what keeps its default.
    -Wno-missing-field-initializers)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(OstrelWarnings INTERFACE -Wduplicated-cond -Wduplicated-branches -Wlogical-op)
endif()
if(OSTREL_WERROR)
    target_compile_options(OstrelWarnings INTERFACE -Werror)
endif()
