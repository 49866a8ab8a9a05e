#include "article/media/CaptureMetadata.h"

#include "platform/foundation/values/Text.h"

namespace ostrel {

namespace {

constexpr std::size_t latitudeLength = 8, longitudeLength = 9, altitudeLength = 9;

/// The offset in bytes of the end of the first `count` characters (UTF-8, RFC 3629); npos when the text is shorter.
std::size_t offsetOfCharacter(std::string_view text, std::size_t count) {
    std::size_t offset = 0;
    for (; count > 0; --count) {
        if (offset >= text.size()) return std::string_view::npos;
        do ++offset;
        while (offset < text.size() && (static_cast<unsigned char>(text[offset]) & 0xC0) == 0x80);
    }
    return offset;
}

void copyLocation(std::string_view text, NSArticleVideoObject& item) {
    const std::size_t longitude = offsetOfCharacter(text, latitudeLength);
    const std::size_t altitude = offsetOfCharacter(text, latitudeLength + longitudeLength);
    const std::size_t end = offsetOfCharacter(text, latitudeLength + longitudeLength + altitudeLength);
    if (end == std::string_view::npos) return;
    item.setLatitude(std::string(text.substr(0, longitude)));
    item.setLongitude(std::string(text.substr(longitude, altitude - longitude)));
    item.setAltitude(replacingOccurrences(text.substr(altitude, end - altitude), "/", ""));
}

}  // namespace

void copyCaptureMetadata(const AVAsset& clip, NSArticleVideoObject& item) {
    for (const AVMetadataItem& fact : clip.metadata()) {
        if (fact.commonKey == AVMetadataCommonKeyCreationDate) {
            item.setDate(fact.dateValue());
        } else if (fact.commonKey == AVMetadataCommonKeyLocation) {
            if (const auto text = fact.stringValue()) copyLocation(*text, item);
        } else if (fact.commonKey == AVMetadataCommonKeyModel) {
            item.setDevice(fact.stringValue());
        } else if (fact.commonKey == AVMetadataCommonKeySoftware) {
            item.setSoftware(fact.stringValue());
        }
    }
}

}  // namespace ostrel
