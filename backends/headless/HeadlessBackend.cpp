#include "backends/headless/HeadlessBackend.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace ostrel {

namespace {

const char* nameOf(Mutation::Type type) {
    switch (type) {
    case Mutation::Type::create: return "create";
    case Mutation::Type::insert: return "insert";
    case Mutation::Type::remove: return "remove";
    case Mutation::Type::update: return "update";
    case Mutation::Type::destroy: return "destroy";
    }
    return "unknown";
}

/// The phase of a transaction to which a step belongs; phases follow each other in this order.
int phaseOf(Mutation::Type type) {
    switch (type) {
    case Mutation::Type::remove:
    case Mutation::Type::destroy: return 0;
    case Mutation::Type::create: return 1;
    case Mutation::Type::insert: return 2;
    case Mutation::Type::update: return 3;
    }
    return 0;
}

/// The parts in which two states differ, as ViewStateChange.
std::uint32_t differences(const ViewState& a, const ViewState& b) {
    std::uint32_t changes = 0;
    if (a.frame.origin != b.frame.origin) changes |= changedFrameOrigin;
    if (a.frame.size != b.frame.size) changes |= changedFrameSize;
    if (a.boundsOrigin != b.boundsOrigin) changes |= changedBoundsOrigin;
    if (a.transform != b.transform || a.rotation != b.rotation) changes |= changedTransform;
    if (a.alpha != b.alpha || a.hidden != b.hidden) changes |= changedAlpha;
    if (a.clipsToBounds != b.clipsToBounds || a.backgroundColor != b.backgroundColor ||
        a.cornerRadius != b.cornerRadius || a.roundsTop != b.roundsTop || a.roundsBottom != b.roundsBottom ||
        a.borderWidth != b.borderWidth || a.borderColor != b.borderColor || a.shadow != b.shadow ||
        a.isSurface != b.isSurface) {
        changes |= changedLayer;
    }
    if (a.content != b.content) changes |= changedContent;
    if (a.cursor != b.cursor || a.accessibility != b.accessibility) changes |= changedAccessibility;
    return changes;
}

/// Why no backend could show `content`; null when it can be shown.
const char* faultOf(const ViewContent& content) {
    const auto* const blur = std::get_if<BlurContent>(&content);
    if (blur && !(std::isfinite(blur->radius) && blur->radius >= 0)) return "a blur has a finite radius";
    const auto* const player = std::get_if<PlayerContent>(&content);
    if (player && !player->engine) return "frames come from an engine";
    return nullptr;
}

bool isFinite(const CGRect& rect) {
    return std::isfinite(rect.origin.x) && std::isfinite(rect.origin.y) && std::isfinite(rect.size.width) &&
           std::isfinite(rect.size.height);
}

}  // namespace

bool HeadlessBackend::require(bool condition, const Mutation& mutation, const char* rule) {
    if (condition) return true;
    std::ostringstream message;
    message << nameOf(mutation.type) << " of view " << mutation.tag;
    if (mutation.parent) message << " in view " << mutation.parent << " at " << mutation.index;
    message << ", transaction " << last_.number << ": " << rule;
    if (onViolation) {
        onViolation(message.str());
    } else {
        std::fprintf(stderr, "%s\n%s", message.str().c_str(), dump().c_str());
        std::abort();
    }
    return false;
}

void HeadlessBackend::mount(const MountingTransaction& transaction) {
    last_ = transaction;
    const Mutation whole{};
    require(!transaction.mutations.empty(), whole, "a transaction changes something");
    // A window sends its whole tree to a new backend as transaction 1.
    if (transaction.number == 1 && lastNumber_ != 0) {
        nodes_.clear();
        root_ = 0;
        lastNumber_ = 0;
    }
    require(transaction.number == lastNumber_ + 1, whole, "transactions are numbered one after the other");
    lastNumber_ = transaction.number;

    int phase = 0;
    std::vector<ViewTag> created;
    for (const Mutation& mutation : transaction.mutations) {
        require(phaseOf(mutation.type) >= phase, mutation,
                "removes and destroys come first, then creates, inserts, updates");
        phase = std::max(phase, phaseOf(mutation.type));
        apply(mutation);
        if (mutation.type == Mutation::Type::create) created.push_back(mutation.tag);
    }
    checkComplete(created);
    if (onMount) onMount(transaction);
}

void HeadlessBackend::apply(const Mutation& mutation) {
    Node* const known = nodes_.contains(mutation.tag) ? &nodes_.at(mutation.tag) : nullptr;
    if (!require(mutation.tag != 0, mutation, "0 is no view")) return;
    if (mutation.type == Mutation::Type::create) {
        if (!require(!known, mutation, "a view is created once") ||
            !require(mutation.state != nullptr, mutation, "it has a state"))
            return;
        require(isFinite(mutation.state->frame), mutation, "its frame is finite");
        if (const char* fault = faultOf(mutation.state->content)) require(false, mutation, fault);
        nodes_.emplace(mutation.tag, Node{.tag = mutation.tag, .state = mutation.state});
        if (root_ == 0) root_ = mutation.tag;
        return;
    }
    if (!require(known != nullptr, mutation, "the view is known")) return;
    switch (mutation.type) {
    case Mutation::Type::create: break;
    case Mutation::Type::insert: {
        if (!require(nodes_.contains(mutation.parent), mutation, "the parent is known") ||
            !require(known->parent == 0 && mutation.tag != root_, mutation, "a view is in one place only") ||
            !require(!isAncestor(mutation.tag, mutation.parent), mutation, "no view is in itself")) {
            return;
        }
        auto& children = nodes_.at(mutation.parent).children;
        if (!require(mutation.index <= children.size(), mutation, "the index is within the children")) return;
        children.insert(children.begin() + static_cast<std::ptrdiff_t>(mutation.index), mutation.tag);
        known->parent = mutation.parent;
        break;
    }
    case Mutation::Type::remove: {
        if (!require(nodes_.contains(mutation.parent), mutation, "the parent is known") ||
            !require(known->parent == mutation.parent, mutation, "the view is a child of that parent")) {
            return;
        }
        auto& children = nodes_.at(mutation.parent).children;
        if (!require(mutation.index < children.size() && children[mutation.index] == mutation.tag, mutation,
                     "the view is at that index")) {
            return;
        }
        children.erase(children.begin() + static_cast<std::ptrdiff_t>(mutation.index));
        known->parent = 0;
        break;
    }
    case Mutation::Type::update: {
        if (!require(mutation.state != nullptr, mutation, "it has a state")) return;
        require(isFinite(mutation.state->frame), mutation, "its frame is finite");
        if (const char* fault = faultOf(mutation.state->content)) require(false, mutation, fault);
        const std::uint32_t actual = differences(*known->state, *mutation.state);
        require(actual != 0, mutation, "an update changes something");
        require((actual & ~mutation.changes) == 0, mutation, "every change is named");
        known->state = mutation.state;
        break;
    }
    case Mutation::Type::destroy: {
        require(known->parent == 0 && mutation.tag != root_, mutation, "only what is in no parent is destroyed");
        require(known->children.empty(), mutation, "children have left before");
        nodes_.erase(mutation.tag);
        break;
    }
    }
}

void HeadlessBackend::checkComplete(const std::vector<ViewTag>& created) {
    for (const ViewTag tag : created) {
        const Node* const present = node(tag);
        require(present && (present->parent != 0 || tag == root_), Mutation::create(tag, nullptr),
                "a created view is inserted in the same transaction");
    }
    for (const Mutation& mutation : last_.mutations) {
        if (mutation.type != Mutation::Type::remove) continue;
        const Node* const present = node(mutation.tag);
        require(!present || present->parent != 0, mutation, "a view that leaves is inserted again or destroyed");
    }
}

void HeadlessBackend::setNeedsFlush() {
    if (onNeedsFlush) onNeedsFlush();
}

void HeadlessBackend::setFramesWanted(bool wanted) {
    framesWanted_ = wanted;
    if (onFramesWanted) onFramesWanted(wanted);
}

const HeadlessBackend::Node* HeadlessBackend::node(ViewTag tag) const {
    const auto found = nodes_.find(tag);
    return found == nodes_.end() ? nullptr : &found->second;
}

bool HeadlessBackend::isAncestor(ViewTag ancestor, ViewTag tag) const {
    for (const Node* n = node(tag); n; n = node(n->parent)) {
        if (n->tag == ancestor) return true;
    }
    return false;
}

std::optional<CGRect> HeadlessBackend::absoluteFrame(ViewTag tag) const {
    const Node* n = node(tag);
    if (!n) return std::nullopt;
    CGRect frame = n->state->frame;
    while ((n = node(n->parent))) {
        frame = frame.offsetBy(n->state->frame.origin.x - n->state->boundsOrigin.x,
                               n->state->frame.origin.y - n->state->boundsOrigin.y);
    }
    return frame;
}

bool HeadlessBackend::isVisible(ViewTag tag) const {
    const Node* const view = node(tag);
    if (!view || !root()) return false;
    CGRect seen = *absoluteFrame(tag);
    for (const Node* n = view; n; n = node(n->parent)) {
        if (n->state->hidden || n->state->alpha <= 0.01) return false;
        if (n->state->clipsToBounds || n->parent == 0) seen = seen.intersection(*absoluteFrame(n->tag));
        if (n->parent == 0 && n->tag != root_) return false;
    }
    return !seen.isEmpty();
}

std::string HeadlessBackend::textOf(const ViewState& state) {
    if (const auto* text = std::get_if<TextContent>(&state.content)) return text->text;
    const auto* input = std::get_if<TextInputContent>(&state.content);
    if (!input) return {};
    if (input->text.empty()) return input->placeholder;
    if (!input->secure) return input->text;
    std::string dots;
    for (const char byte : input->text) {
        if ((static_cast<unsigned char>(byte) & 0xC0) != 0x80) dots += "\u2022";
    }
    return dots;
}

template <class Visit>
void HeadlessBackend::visitTree(ViewTag tag, int depth, const Visit& visit) const {
    const Node* const n = node(tag);
    if (!n) return;
    visit(*n, depth);
    for (const ViewTag child : n->children) visitTree(child, depth + 1, visit);
}

std::vector<std::string> HeadlessBackend::visibleTexts() const {
    std::vector<std::string> texts;
    visitTree(root_, 0, [&](const Node& n, int) {
        std::string text = textOf(*n.state);
        if (!text.empty() && isVisible(n.tag)) texts.push_back(std::move(text));
    });
    return texts;
}

std::vector<ViewTag> HeadlessBackend::tagsWithText(std::string_view text) const {
    std::vector<ViewTag> tags;
    visitTree(root_, 0, [&](const Node& n, int) {
        if (textOf(*n.state) == text && isVisible(n.tag)) tags.push_back(n.tag);
    });
    return tags.empty() ? tagsWithLabel(text) : tags;
}

std::vector<ViewTag> HeadlessBackend::tagsWithLabel(std::string_view label) const {
    std::vector<ViewTag> tags;
    visitTree(root_, 0, [&](const Node& n, int) {
        if (n.state->accessibility.label == label && isVisible(n.tag)) tags.push_back(n.tag);
    });
    return tags;
}

std::string HeadlessBackend::dump() const {
    std::ostringstream out;
    visitTree(root_, 0, [&](const Node& n, int depth) {
        const CGRect& f = n.state->frame;
        out << std::string(static_cast<std::size_t>(depth) * 2, ' ') << '#' << n.tag << " (" << f.origin.x << ", "
            << f.origin.y << ", " << f.size.width << ", " << f.size.height << ')';
        if (n.state->boundsOrigin != CGPoint{}) {
            out << " scrolled (" << n.state->boundsOrigin.x << ", " << n.state->boundsOrigin.y << ')';
        }
        if (n.state->hidden) out << " hidden";
        if (n.state->alpha != 1) out << " alpha " << n.state->alpha;
        if (const std::string text = textOf(*n.state); !text.empty()) out << " \"" << text << '"';
        if (!n.state->accessibility.label.empty()) out << " [" << n.state->accessibility.label << ']';
        out << '\n';
    });
    return out.str();
}

}  // namespace ostrel
