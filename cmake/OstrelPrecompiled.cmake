# ostrel_use_pch(<target> [<header>...]): the standard headers that nearly every source includes, and the named ones,
# parsed once for the target. Sources still include what they use: scripts/check-headers compiles every header alone, and
# scripts/tidy every changed source, both without this.
function(ostrel_use_pch target)
    # CMake would look for a header without angle brackets in the folder of the target; ours are rooted at the tree.
    set(headers ${ARGN})
    list(TRANSFORM headers REPLACE "^([^<].*)$" "<\\1>")
    target_precompile_headers(${target} PRIVATE
        <algorithm>
        <array>
        <chrono>
        <cmath>
        <cstdint>
        <functional>
        <map>
        <memory>
        <mutex>
        <optional>
        <string>
        <string_view>
        <unordered_map>
        <utility>
        <vector>
        ${headers})
    # ccache reads a precompiled header's inputs only with this flag of GCC.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(${target} PRIVATE -fpch-preprocess)
    endif()
endfunction()
