#include "backends/qt/text/QtTextMeasurer.h"

#include "backends/qt/text/QtFonts.h"
#include "backends/qt/text/TextBlock.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace ostrel {

namespace {

constexpr std::size_t maximumEntries = 4096;
constexpr std::size_t maximumTextBytes = 4 << 20;
constexpr std::size_t maximumLineHeights = 256;
/// How many texts may wait to be measured ahead: several screens of rows.
constexpr std::size_t maximumAhead = 256;
/// Points. The part of a long text that is laid out first to find the place under a pointer.
constexpr double firstReach = 2048;

std::size_t mixed(std::size_t seed, std::size_t value) {
    return seed ^ (value + 0x9E3779B97F4A7C15ull + (seed << 6) + (seed >> 2));
}

std::size_t hashOf(std::string_view text, const UIFont& font, CGFloat width, int maximumLines) {
    std::size_t hash = std::hash<std::string_view>()(text);
    hash = mixed(hash, std::hash<std::string>()(font.name));
    hash = mixed(hash, std::hash<double>()(font.pointSize));
    hash = mixed(hash, std::hash<double>()(width));
    return mixed(hash, static_cast<std::size_t>(maximumLines));
}

/// The size and the number of lines of a text; the caller adds `lineHeight`. Any thread.
TextMetrics measured(std::string_view text, const UIFont& font, CGFloat width, int maximumLines) {
    TextBlock::Options options;
    options.width = width;
    options.maximumLines = maximumLines;
    const TextBlock block(text, qtFont(font), options);
    return {{block.size().width(), block.size().height()}, block.lineCount(), 0};
}

}  // namespace

/// The thread that measures ahead.
class QtTextMeasurer::Ahead final {
public:
    Ahead() : thread_([this] { run(); }) {}
    ~Ahead() {
        {
            const std::lock_guard lock(mutex_);
            stopping_ = true;
            added_.notify_all();
        }
        thread_.join();
    }
    /// Adds a text to the queue. A full queue drops its oldest texts: the list has scrolled past their rows.
    void add(Entry question) {
        const std::lock_guard lock(mutex_);
        if (questions_.size() >= maximumAhead) questions_.pop_front();
        questions_.push_back(std::move(question));
        added_.notify_one();
    }
    std::vector<Entry> takeAnswers() {
        const std::lock_guard lock(mutex_);
        return std::exchange(answers_, {});
    }
    /// Removes a text from the queue, because the main thread measures it now.
    void drop(std::size_t hash) {
        const std::lock_guard lock(mutex_);
        std::erase_if(questions_, [&](const Entry& question) { return question.hash == hash; });
    }

private:
    void run() {
        std::unique_lock lock(mutex_);
        for (;;) {
            added_.wait(lock, [&] { return stopping_ || !questions_.empty(); });
            if (stopping_) return;
            Entry entry = std::move(questions_.front());
            questions_.pop_front();
            lock.unlock();
            entry.metrics = measured(entry.text, entry.font, entry.width, entry.maximumLines);
            lock.lock();
            if (answers_.size() < maximumAhead) answers_.push_back(std::move(entry));
        }
    }

    // Guards the members below, except the thread.
    std::mutex mutex_;
    std::condition_variable added_;
    std::deque<Entry> questions_;
    std::vector<Entry> answers_;
    bool stopping_ = false;
    std::thread thread_;
};

QtTextMeasurer::QtTextMeasurer()
    : answers_({.totalCost = maximumTextBytes, .costOfOne = maximumTextBytes / 2, .count = maximumEntries}) {}
QtTextMeasurer::~QtTextMeasurer() = default;

const QtTextMeasurer::Entry* QtTextMeasurer::find(std::size_t hash, std::string_view text, const UIFont& font,
                                                  CGFloat width, int maximumLines) {
    const Entry* entry = answers_.find(hash);
    return entry && entry->asks(text, font, width, maximumLines) ? entry : nullptr;
}

void QtTextMeasurer::keep(Entry entry) {
    const std::size_t hash = entry.hash, cost = entry.text.size();
    answers_.insert(hash, std::move(entry), cost);
}

TextMetrics QtTextMeasurer::measure(std::string_view text, const UIFont& font, CGFloat width, int maximumLines) {
    if (text.empty()) return {{}, 0, lineHeight(font)};
    const std::size_t hash = hashOf(text, font, width, maximumLines);
    if (const Entry* known = find(hash, text, font, width, maximumLines)) return known->metrics;
    if (ahead_) {
        for (Entry& answer : ahead_->takeAnswers()) {
            answer.metrics.lineHeight = lineHeight(answer.font);
            keep(std::move(answer));
        }
        if (const Entry* known = find(hash, text, font, width, maximumLines)) return known->metrics;
        ahead_->drop(hash);
    }
    TextMetrics metrics = measured(text, font, width, maximumLines);
    metrics.lineHeight = lineHeight(font);
    keep({hash, std::string(text), font, width, maximumLines, metrics});
    return metrics;
}

void QtTextMeasurer::measureAhead(std::string text, const UIFont& font, CGFloat width, int maximumLines) {
    if (text.empty()) return;
    const std::size_t hash = hashOf(text, font, width, maximumLines);
    if (find(hash, text, font, width, maximumLines)) return;
    if (!ahead_) ahead_ = std::make_unique<Ahead>();
    ahead_->add({hash, std::move(text), font, width, maximumLines, {}});
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
