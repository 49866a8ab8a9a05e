#pragma once

#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>

namespace ostrel {

/// Clips made by the ffmpeg command line, which only tests use. A clip is made once for all tests of the process.
class ClipMaker final {
public:
    static ClipMaker& shared() {
        static ClipMaker maker;
        return maker;
    }

    /// The path of a clip. `arguments`: of ffmpeg, without the output; `name`: of the output, whose extension chooses the
    /// container. "{NAME}" in the arguments is the path of the clip NAME made before.
    std::string make(const std::string& name, std::string arguments) {
        const auto key = name + " " + arguments;
        if (const auto made = made_.find(key); made != made_.end()) return made->second;
        for (std::size_t at; (at = arguments.find('{')) != std::string::npos;) {
            const std::size_t end = arguments.find('}', at);
            arguments.replace(at, end - at + 1, folder_.path(arguments.substr(at + 1, end - at - 1)));
        }
        const std::string path = folder_.path(name);
        const std::string command =
            "ffmpeg -nostdin -v error -y " + arguments + " '" + path + "' 2>'" + folder_.path("log") + "'";
        // NOLINTNEXTLINE(cert-env33-c, concurrency-mt-unsafe): a tool of the tests, from one thread
        if (std::system(command.c_str()) != 0)
            throw std::runtime_error("ffmpeg made no " + name + ": " + folder_.read("log"));
        return made_[key] = path;
    }

    /// Moving bars and a tone. `size` as "640x360".
    std::string plain(
        const std::string& name, const std::string& size, double seconds = 1,
        const std::string& encoding = "-c:v libx264 -preset ultrafast -pix_fmt yuv420p -c:a aac",
        int framesPerSecond = 30) {
        const std::string length = ":d=" + std::to_string(seconds);
        return make(name, "-f lavfi -i testsrc2=s=" + size + ":r=" + std::to_string(framesPerSecond) +
                              length + " -f lavfi -i sine=440:r=44100" + length + " -shortest " + encoding);
    }

private:
    TemporaryFolder folder_;
    std::map<std::string, std::string> made_;
};

}  // namespace ostrel
