#pragma once

#include "platform/uikit/mounting/Mounting.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ostrel {

/// The oracle: applies every transaction to a tree of its own, checks each precondition, and draws nothing.
/// Tests read from it what a user would see; debug builds of other backends replay their transactions on it.
/// Main thread.
class HeadlessBackend final : public MountingBackend {
public:
    struct Node {
        ViewTag tag = 0;
        ViewTag parent = 0;             ///< 0: the root, or a view outside of the tree at this step
        std::vector<ViewTag> children;  ///< in z-order, the first at the back
        std::shared_ptr<const ViewState> state;
    };

    /// Called with each broken rule. Without it the process prints the rule and aborts.
    std::function<void(std::string)> onViolation;
    std::function<void()> onNeedsFlush;
    std::function<void(bool)> onFramesWanted;
    /// Called with each transaction after it was applied.
    std::function<void(const MountingTransaction&)> onMount;

    void mount(const MountingTransaction& transaction) override;
    void setNeedsFlush() override;
    void setFramesWanted(bool wanted) override;
    CGFloat scale() const override { return scale_; }
    void setScale(CGFloat scale) { scale_ = scale; }
    bool framesWanted() const { return framesWanted_; }

    // The mounted tree
    const Node* root() const { return node(root_); }
    const Node* node(ViewTag tag) const;
    std::size_t count() const { return nodes_.size(); }
    std::uint64_t transactionCount() const { return lastNumber_; }
    const MountingTransaction& lastTransaction() const { return last_; }
    /// The frame in the window's coordinates, without transforms; absent when `tag` is not mounted.
    std::optional<CGRect> absoluteFrame(ViewTag tag) const;
    /// Whether a part of the view is visible: neither the view nor an ancestor is hidden or transparent, and
    /// ancestors do not clip all of it. A view that other views cover counts as visible.
    bool isVisible(ViewTag tag) const;
    /// The text that a user reads in a view: its text, the placeholder of an empty editor, dots for a secure
    /// text.
    static std::string textOf(const ViewState& state);
    /// The visible texts in tree order.
    std::vector<std::string> visibleTexts() const;
    /// The visible views whose text, else whose accessibility label, is `text`; in tree order.
    std::vector<ViewTag> tagsWithText(std::string_view text) const;
    std::vector<ViewTag> tagsWithLabel(std::string_view label) const;
    /// The tree with one line for each view, for the messages of failed tests.
    std::string dump() const;

private:
    bool require(bool condition, const Mutation& mutation, const char* rule);
    void apply(const Mutation& mutation);
    void checkComplete(const std::vector<ViewTag>& created);
    bool isAncestor(ViewTag ancestor, ViewTag tag) const;
    template <class Visit>
    void visitTree(ViewTag tag, int depth, const Visit& visit) const;

    std::unordered_map<ViewTag, Node> nodes_;
    ViewTag root_ = 0;
    std::uint64_t lastNumber_ = 0;
    MountingTransaction last_;
    bool framesWanted_ = false;
    CGFloat scale_ = 1;
};

}  // namespace ostrel
