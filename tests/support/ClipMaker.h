#pragma once

#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace ostrel {

/// Clips made by the ffmpeg command line, which only tests use. Each clip is made once for all tests and runs: the
/// build folder keeps it in test-clips/, under a name that depends on the arguments. Tests must not change a clip; they
/// copy it.
class ClipMaker final {
public:
    static ClipMaker& shared() {
        static ClipMaker maker;
        return maker;
    }

    /// The path of a clip. `arguments`: of ffmpeg, without the output; `name`: of the output, whose extension chooses
    /// the container. "{NAME}" in the arguments is the path of the clip NAME made before by this process.
    std::string make(const std::string& name, std::string arguments) {
        for (std::size_t at; (at = arguments.find('{')) != std::string::npos;) {
            const std::size_t end = arguments.find('}', at);
            arguments.replace(at, end - at + 1, made_.at(arguments.substr(at + 1, end - at - 1)));
        }
        const std::string file = std::to_string(std::hash<std::string>()(arguments)) + "-" + name;
        const std::string path = (folder_ / file).string();
        if (!std::filesystem::exists(path)) {
            // Another process may make the same clip now: each writes a file of its own, and the rename is atomic.
            const std::string draft = (folder_ / (std::to_string(::getpid()) + "-" + file)).string();
            const TemporaryFolder logs;
            const std::string command =
                "ffmpeg -nostdin -v error -y " + arguments + " '" + draft + "' 2>'" + logs.path("log") + "'";
            // NOLINTNEXTLINE(cert-env33-c, concurrency-mt-unsafe): a tool of the tests, from one thread
            if (std::system(command.c_str()) != 0) {
                std::filesystem::remove(draft);
                throw std::runtime_error("ffmpeg made no " + name + ": " + logs.read("log"));
            }
            std::filesystem::rename(draft, path);
        }
        return made_[name] = path;
    }

    /// Moving bars and a tone. `size` as "640x360".
    std::string plain(const std::string& name, const std::string& size, double seconds = 1,
                      const std::string& encoding = "-c:v libx264 -preset ultrafast -pix_fmt yuv420p -c:a aac",
                      int framesPerSecond = 30) {
        const std::string length = ":d=" + std::to_string(seconds);
        return make(name, "-f lavfi -i testsrc2=s=" + size + ":r=" + std::to_string(framesPerSecond) + length +
                              " -f lavfi -i sine=440:r=44100" + length + " -shortest " + encoding);
    }

private:
    ClipMaker() { std::filesystem::create_directories(folder_); }

    // OSTREL_RESOURCE_DIR is "share/ostrel-article" in the build folder.
    const std::filesystem::path folder_ = std::filesystem::path(OSTREL_RESOURCE_DIR) / "../../test-clips";
    /// The paths of the clips made by this process, by name.
    std::map<std::string, std::string> made_;
};

}  // namespace ostrel
