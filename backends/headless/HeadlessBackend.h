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

/// The oracle: takes every transaction, checks each precondition, and keeps the tree that is mounted. Shows nothing.
/// Tests look at what a user would see here; debug builds of other backends replay their transactions on it. Main thread.
class HeadlessBackend final : public MountingBackend {
public:
    struct Node {
        ViewTag tag = 0;
        ViewTag parent = 0;             ///< 0: the root, and what is not in the tree at this step
        std::vector<ViewTag> children;  ///< back to front
        std::shared_ptr<const ViewState> state;
    };

    /// Told of each broken rule. Without it the process prints the rule and aborts.
    std::function<void(std::string)> onViolation;
    std::function<void()> onNeedsFlush;
    std::function<void(bool)> onFramesWanted;
    /// Sees each transaction after it was applied.
    std::function<void(const MountingTransaction&)> onMount;

    void mount(const MountingTransaction& transaction) override;
    void setNeedsFlush() override;
    void setFramesWanted(bool wanted) override;
    CGFloat scale() const override { return scale_; }
    void setScale(CGFloat scale) { scale_ = scale; }
    bool framesWanted() const { return framesWanted_; }

    // What is mounted
    const Node* root() const { return node(root_); }
    const Node* node(ViewTag tag) const;
    std::size_t count() const { return nodes_.size(); }
    std::uint64_t transactionCount() const { return lastNumber_; }
    const MountingTransaction& lastTransaction() const { return last_; }
    /// In the window's coordinates, transforms ignored; none when `tag` is not mounted.
    std::optional<CGRect> absoluteFrame(ViewTag tag) const;
    /// Whether any part of it can be seen: neither it nor an ancestor hidden or transparent, and not wholly clipped.
    /// What other views cover counts as seen.
    bool isVisible(ViewTag tag) const;
    /// What a view reads: its text, the placeholder of an empty editor, dots for a secret.
    static std::string textOf(const ViewState& state);
    /// The visible texts, in the order of the tree.
    std::vector<std::string> visibleTexts() const;
    /// The visible views whose text, else whose accessibility label, is `text`, in the order of the tree.
    std::vector<ViewTag> tagsWithText(std::string_view text) const;
    std::vector<ViewTag> tagsWithLabel(std::string_view label) const;
    /// The tree, a line a view, for messages of failed tests.
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
