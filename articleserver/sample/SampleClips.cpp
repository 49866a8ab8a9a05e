#include "articleserver/sample/SampleClips.h"

// The assembler puts the files into the program as they are; the folder comes from the build.
#define OSTREL_EMBED(name, file)                                                                             \
    __asm__(".pushsection .rodata\n"                                                                         \
            ".global ostrelSample_" #name "\n"                                                               \
            ".global ostrelSample_" #name "_end\n"                                                           \
            "ostrelSample_" #name ":\n.incbin \"" OSTREL_SAMPLE_CLIPS "/" file "\"\n"                        \
            "ostrelSample_" #name "_end:\n.byte 0\n"                                                         \
            ".popsection\n");                                                                                \
    extern "C" const char ostrelSample_##name[];                                                             \
    extern "C" const char ostrelSample_##name##_end[];

OSTREL_EMBED(seaVideo, "sea.mp4")
OSTREL_EMBED(seaStill, "sea.jpg")
OSTREL_EMBED(lanternVideo, "lantern.mp4")
OSTREL_EMBED(lanternStill, "lantern.jpg")
OSTREL_EMBED(wheelVideo, "wheel.mp4")
OSTREL_EMBED(wheelStill, "wheel.jpg")
OSTREL_EMBED(rainVideo, "rain.mp4")
OSTREL_EMBED(rainStill, "rain.jpg")

namespace ostrel {

namespace {

std::string_view between(const char* begin, const char* end) {
    return {begin, static_cast<std::size_t>(end - begin)};
}

}  // namespace

#define OSTREL_EMBEDDED(name) between(ostrelSample_##name, ostrelSample_##name##_end)

SampleClipFiles filesOf(SampleClip clip) {
    switch (clip) {
    case SampleClip::Sea: return {OSTREL_EMBEDDED(seaVideo), OSTREL_EMBEDDED(seaStill), 640, 360, 6};
    case SampleClip::Lantern:
        return {OSTREL_EMBEDDED(lanternVideo), OSTREL_EMBEDDED(lanternStill), 360, 640, 5};
    case SampleClip::Wheel: return {OSTREL_EMBEDDED(wheelVideo), OSTREL_EMBEDDED(wheelStill), 480, 480, 4};
    case SampleClip::Rain: return {OSTREL_EMBEDDED(rainVideo), OSTREL_EMBEDDED(rainStill), 360, 640, 4};
    }
    return {};
}

}  // namespace ostrel
