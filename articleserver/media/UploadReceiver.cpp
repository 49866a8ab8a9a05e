#include "articleserver/media/UploadReceiver.h"

#include "articleserver/common/ServerLimits.h"
#include "articleserver/common/ServerText.h"

#include <algorithm>

namespace articleserver {

namespace {

std::string quoted(std::string_view name) { return "\"" + std::string(name) + "\""; }

}  // namespace

UploadReceiver::UploadReceiver(std::string_view contentType, MediaFolder& media, std::vector<FileRule> rules,
                               std::shared_ptr<void> slot)
    : media_(media), rules_(std::move(rules)), slot_(std::move(slot)), reader_(contentType, *this) {}

bool UploadReceiver::take(std::string_view bytes) {
    if (failure_) return false;
    auto taken = reader_.take(bytes);
    if (!taken) failure_ = taken.failure();
    return !failure_;
}

ServerResult<void> UploadReceiver::finish() {
    if (failure_) return *failure_;
    auto finished = reader_.finish();
    if (!finished) return finished.failure();
    for (const FileRule& rule : rules_) {
        auto found = files_.find(rule.part);
        if (found == files_.end()) {
            return ServerFailure{ServerFault::badInput, "The file " + quoted(rule.part) + " is missing."};
        }
        auto flushed = found->second->flush();
        if (!flushed) return flushed.failure();
    }
    for (const auto& [name, text] : fields_) {
        if (!isValidText(text)) {
            return ServerFailure{ServerFault::badInput, "The request holds text that is not UTF-8."};
        }
    }
    return {};
}

std::optional<std::string> UploadReceiver::field(std::string_view name) const {
    auto found = fields_.find(name);
    return found == fields_.end() ? std::nullopt : std::optional(found->second);
}

ServerResult<void> UploadReceiver::beginPart(const std::string& name, bool isFile) {
    auto rule =
        std::find_if(rules_.begin(), rules_.end(), [&](const FileRule& candidate) { return candidate.part == name; });
    currentRule_ = rule == rules_.end() ? nullptr : &*rule;
    if (files_.contains(name) || fields_.contains(name)) {
        return ServerFailure{ServerFault::badInput, "The request gives a field twice."};
    }
    if (isFile != (currentRule_ != nullptr)) {
        return ServerFailure{ServerFault::badInput, isFile ? "The request holds a file that is not asked for."
                                                           : "A file of the request is given as a text."};
    }
    if (!currentRule_) {
        currentField_ = &fields_[name];
        return {};
    }
    auto file = media_.receive(currentRule_->extension);
    if (!file) return file.failure();
    currentFile_ = file->get();
    files_.emplace(name, std::move(*file));
    return {};
}

ServerResult<void> UploadReceiver::content(std::string_view bytes) {
    if (currentRule_) {
        if (currentFile_->size() + bytes.size() > currentRule_->maximumBytes) {
            return ServerFailure{ServerFault::tooLarge, "The file " + quoted(currentRule_->part) + " is too large."};
        }
        return currentFile_->append(bytes);
    }
    fieldBytes_ += bytes.size();
    if (fieldBytes_ > ServerLimits::uploadFields) {
        return ServerFailure{ServerFault::tooLarge, "The fields of the request are too large."};
    }
    currentField_->append(bytes);
    return {};
}

}  // namespace articleserver
