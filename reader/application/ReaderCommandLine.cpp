#include "reader/application/ReaderCommandLine.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <map>

namespace ostrel {

void addWindowOptions(CLI::App& app, ReaderOptions& options) {
    static const std::map<std::string, UIUserInterfaceIdiom> idioms{
        {"phone", UIUserInterfaceIdiom::phone}, {"pad", UIUserInterfaceIdiom::pad}, {"mac", UIUserInterfaceIdiom::mac}};
    app.add_option("--idiom", options.idiomName, "The device to be: phone, pad or mac")
        ->check(CLI::IsMember({"phone", "pad", "mac"}))
        ->each([&options](const std::string& name) {
            if (const auto idiom = idioms.find(name); idiom != idioms.end()) options.idiom = idiom->second;
        })
        ->capture_default_str();
    app.add_option("--language", options.language, "Language of the texts: en or zh-Hans")->type_name("TAG");
    app.add_option("--width", options.width, "Width of the window in points")->check(CLI::Range(200, 10000));
    app.add_option("--height", options.height, "Height of the window in points")->check(CLI::Range(200, 10000));
    app.add_option("--scale", options.scale, "Device pixels per point")->check(CLI::Range(0.5, 4.0));
}

std::optional<int> parseCommandLine(CLI::App& app, int argc, char** argv) {
    try {
        app.parse(argc, argv);
        return std::nullopt;
    } catch (const CLI::CallForHelp&) {
        std::cout << app.help();
        return 0;
    } catch (const CLI::ParseError& error) {
        std::cerr << app.get_name() << ": " << error.what() << ". See --help.\n";
        return 2;
    }
}

}  // namespace ostrel
