#include "backends/ffmpeg/convert/ClipMetadata.h"

#include "platform/foundation/values/Text.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <initializer_list>

namespace ostrel {

namespace {

// The names of each fact in containers and of cameras, the most exact first: keys of QuickTime metadata, then the names
// that libavformat uses for atoms of QuickTime user data ("©xyz", "loci", "©mod", "©swr"), Matroska and RIFF tags.
constexpr std::array dateNames{"com.apple.quicktime.creationdate", "creation_time", "date"};
constexpr std::array placeNames{"com.apple.quicktime.location.ISO6709", "location", "location-eng"};
constexpr std::array modelNames{"com.apple.quicktime.model", "com.android.model", "model", "model-eng"};
constexpr std::array softwareNames{"com.apple.quicktime.software", "software", "software-eng"};
constexpr std::array makeNames{"com.apple.quicktime.make", "com.android.manufacturer", "make", "make-eng"};

const char* find(const AVFormatContext& format, const char* name) {
    const AVDictionaryEntry* entry = av_dict_get(format.metadata, name, nullptr, 0);
    return entry && *entry->value ? entry->value : nullptr;
}

template <std::size_t count>
const char* first(const AVFormatContext& format, const std::array<const char*, count>& names) {
    for (const char* name : names) {
        if (const char* value = find(format, name)) return value;
    }
    return nullptr;
}

/// Parses ISO 8601 in the forms that cameras write, also with an offset without a colon ("+0800").
std::optional<NSDate> dateOf(std::string text) {
    const std::size_t size = text.size();
    const bool hasShortOffset = size > 5 && (text[size - 5] == '+' || text[size - 5] == '-') &&
                                text.find_first_not_of("0123456789", size - 4) == std::string::npos &&
                                text.find('T') != std::string::npos;
    if (hasShortOffset) text.insert(size - 2, ":");
    return NSDate::fromISO8601(text);
}

std::optional<NSDate> firstDate(const AVFormatContext& format) {
    for (const char* name : dateNames) {
        const char* value = find(format, name);
        if (!value) continue;
        if (const auto date = dateOf(value)) return date;
    }
    return std::nullopt;
}

}  // namespace

std::vector<AVMetadataItem> captureMetadata(const AVFormatContext& format) {
    std::vector<AVMetadataItem> items;
    if (const auto date = firstDate(format)) {
        items.push_back({std::string(AVMetadataCommonKeyCreationDate), *date});
    }
    const auto add = [&](std::string_view key, const char* value) {
        if (!value) return;
        const std::string_view text = value;
        const std::string_view valid = text.substr(0, validUtf8Prefix(text));
        if (!valid.empty()) items.push_back({std::string(key), std::string(valid)});
    };
    add(AVMetadataCommonKeyLocation, first(format, placeNames));
    add(AVMetadataCommonKeyModel, first(format, modelNames));
    add(AVMetadataCommonKeySoftware, first(format, softwareNames));
    return items;
}

void copyCaptureMetadata(const AVFormatContext& from, AVFormatContext& to) {
    const auto set = [&](const char* name, const char* value) {
        if (value) av_dict_set(&to.metadata, name, value, 0);
    };
    if (const auto date = firstDate(from)) {
        const auto seconds = static_cast<std::time_t>(date->secondsSince1970);
        std::tm parts{};
        std::array<char, 64> text{};
        if (::gmtime_r(&seconds, &parts) && std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts)) {
            set("creation_time", text.data());
            const char* stated = find(from, dateNames[0]);
            set(dateNames[0], stated ? stated : text.data());
        }
    }
    set(placeNames[0], first(from, placeNames));
    set(modelNames[0], first(from, modelNames));
    set(softwareNames[0], first(from, softwareNames));
    set(makeNames[0], first(from, makeNames));
}

}  // namespace ostrel
