#include "backends/qt/QtTextMeasurer.h"

#include "backends/qt/QtFonts.h"
#include "backends/qt/TextBlock.h"

namespace ostrel {

namespace {

constexpr std::size_t maximumEntries = 4096;
constexpr std::size_t maximumTextBytes = 4 << 20;
constexpr std::size_t maximumLineHeights = 256;
/// Points. Of a longer text only as much is laid out as a pointer reaches.
constexpr double firstReach = 2048;

std::size_t mixed(std::size_t seed, std::size_t value) {
    return seed ^ (value + 0x9E3779B97F4A7C15ull + (seed << 6) + (seed >> 2));
}

}  // namespace

TextMetrics QtTextMeasurer::measure(std::string_view text, const UIFont& font, CGFloat width,
                                    int maximumLines) {
    if (text.empty()) return {{}, 0, lineHeight(font)};
    std::size_t hash = std::hash<std::string_view>()(text);
    hash = mixed(hash, std::hash<std::string>()(font.name));
    hash = mixed(hash, std::hash<double>()(font.pointSize));
    hash = mixed(hash, std::hash<double>()(width));
    hash = mixed(hash, static_cast<std::size_t>(maximumLines));

    const auto found = byHash_.find(hash);
    if (found != byHash_.end()) {
        const Entry& entry = *found->second;
        if (entry.text == text && entry.font == font && entry.width == width &&
            entry.maximumLines == maximumLines) {
            recent_.splice(recent_.begin(), recent_, found->second);
            return recent_.front().metrics;
        }
        // Another question with the same hash gives way.
        textBytes_ -= entry.text.size();
        recent_.erase(found->second);
        byHash_.erase(found);
    }

    TextBlock::Options options;
    options.width = width;
    options.maximumLines = maximumLines;
    const TextBlock block(text, qtFont(font), options);
    const TextMetrics metrics{
        {block.size().width(), block.size().height()}, block.lineCount(), lineHeight(font)};

    if (text.size() > maximumTextBytes / 2) return metrics;
    recent_.push_front({hash, std::string(text), font, width, maximumLines, metrics});
    byHash_[hash] = recent_.begin();
    textBytes_ += text.size();
    while (recent_.size() > maximumEntries || textBytes_ > maximumTextBytes) {
        textBytes_ -= recent_.back().text.size();
        byHash_.erase(recent_.back().hash);
        recent_.pop_back();
    }
    return metrics;
}

CGFloat QtTextMeasurer::lineHeight(const UIFont& font) {
    const std::pair<std::string, CGFloat> key(font.name, font.pointSize);
    const auto found = lineHeights_.find(key);
    if (found != lineHeights_.end()) return found->second;
    if (lineHeights_.size() >= maximumLineHeights) lineHeights_.clear();
    return lineHeights_[key] = TextBlock::lineHeight(qtFont(font));
}

std::size_t QtTextMeasurer::offsetAtPoint(std::string_view text, const TextLayout& layout, CGPoint point) {
    double reach = firstReach;
    while (reach < point.y + 1 && reach < CGFLOAT_MAX_TEXT) reach *= 2;
    TextBlock::Options options;
    options.width = layout.width;
    options.maximumLines = layout.maximumLines;
    if (layout.maximumLines <= 0) options.height = reach;
    options.lineBreakMode = layout.lineBreakMode;
    options.alignment = layout.alignment;
    const TextBlock block(text, qtFont(layout.font), options);
    return TextBlock::bytesOf(text, block.placeAt({point.x, point.y}));
}

}  // namespace ostrel
