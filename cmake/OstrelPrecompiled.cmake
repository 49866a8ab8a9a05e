# ostrel_use_pch(<target>): the standard headers that nearly every source includes, parsed once for the target. Sources
# still include what they use; scripts/check-headers compiles every header alone, without this.
function(ostrel_use_pch target)
    target_precompile_headers(${target} PRIVATE
        <algorithm>
        <cstdint>
        <functional>
        <map>
        <memory>
        <optional>
        <string>
        <string_view>
        <unordered_map>
        <utility>
        <vector>)
    # ccache reads a precompiled header's inputs only with this flag of GCC.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(${target} PRIVATE -fpch-preprocess)
    endif()
endfunction()
