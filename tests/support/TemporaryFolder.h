#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace ostrel {

/// A new empty folder that goes, with all in it, at the end of the test.
class TemporaryFolder final {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "ostrel-test-XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw std::runtime_error("No temporary folder can be made.");
        path_ = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string path(const std::string& name) const { return path_ + "/" + name; }

    /// Writes a file, making the folders it stands in; returns its path.
    std::string write(const std::string& name, const std::string& text) const {
        std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
        std::ofstream(path(name), std::ios::binary) << text;
        return path(name);
    }
    /// The content of a file; empty when there is none.
    std::string read(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(path(name), std::ios::binary).rdbuf();
        return text.str();
    }

private:
    std::string path_;
};

}  // namespace ostrel
