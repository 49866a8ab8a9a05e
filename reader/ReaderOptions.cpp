#include "reader/ReaderOptions.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <map>

namespace ostrel {

ReaderCommandLine parseReaderCommandLine(int argc, char** argv) {
    ReaderOptions options;
    CLI::App app{
        "Reads and writes articles. Without --server it starts an article server of its own, with sample\n"
        "articles and two accounts.",
        "ostrel-reader"};
    const std::map<std::string, UIUserInterfaceIdiom> idioms{{"phone", UIUserInterfaceIdiom::phone},
                                                             {"pad", UIUserInterfaceIdiom::pad},
                                                             {"mac", UIUserInterfaceIdiom::mac}};
    app.add_option("--idiom", options.idiomName, "The device to be: phone, pad or mac")
        ->check(CLI::IsMember({"phone", "pad", "mac"}))
        ->capture_default_str();
    app.add_option("--server", options.server, "Base address of a server that runs elsewhere")
        ->type_name("URL");
    app.add_option("--data", options.dataFolder, "Folder of the own server's articles")->type_name("DIR");
    app.add_option("--tour", options.tourFolder,
                   "Use the window by itself on data of its own, check and picture each step")
        ->type_name("DIR");
    app.add_option("--pictures", options.picturesFolder, "Folder of the pictures to choose from")
        ->type_name("DIR");
    app.add_option("--videos", options.videosFolder, "Folder of the clips to choose from")->type_name("DIR");
    app.add_option("--language", options.language, "Language of the texts: en or zh-Hans")->type_name("TAG");
    app.add_option("--width", options.width, "Width of the window in points")->check(CLI::Range(200, 10000));
    app.add_option("--height", options.height, "Height of the window in points")
        ->check(CLI::Range(200, 10000));
    app.add_option("--scale", options.scale, "Device pixels per point")->check(CLI::Range(0.5, 4.0));
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        std::cout << app.help();
        return {std::nullopt, 0};
    } catch (const CLI::ParseError& error) {
        std::cerr << "ostrel-reader: " << error.what() << ". See --help.\n";
        return {std::nullopt, 2};
    }
    if (!options.server.empty() && !options.tourFolder.empty()) {
        std::cerr << "ostrel-reader: --tour starts a server of its own, so it does not go with --server. See "
                     "--help.\n";
        return {std::nullopt, 2};
    }
    options.idiom = idioms.at(options.idiomName);
    return {options, 0};
}

}  // namespace ostrel
