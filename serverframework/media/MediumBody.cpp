#include "serverframework/media/MediumBody.h"

#include <new>
#include <utility>

namespace ostrel {

bool MediumBody::fail(std::string reason) {
    failure_ = std::move(reason);
    return false;
}

bool MediumBody::write(std::string_view bytes) {
    try {
        if (file_) {
            if (file_->append(bytes)) return true;
            // The disk is probably full: the rest of the body stays in memory.
            auto written = file_->readBack();
            file_.reset();
            if (!written) return fail("The medium cannot be kept: its file cannot be read.");
            memory_ = std::move(*written);
        }
        if (memory_.size() + bytes.size() > limits_.bodyInMemoryBytes && !hasTriedFile_) {
            hasTriedFile_ = true;
            auto file = openFile_ ? openFile_() : std::nullopt;
            if (file && file->append(memory_) && file->append(bytes)) {
                file_.emplace(std::move(*file));
                memory_ = {};
                return true;
            }
        }
        if (memory_.size() + bytes.size() > limits_.bodyWithoutFileBytes) {
            return fail("There is no room on the disk for the medium.");
        }
        memory_.append(bytes);
        return true;
    } catch (const std::bad_alloc&) {
        return fail("There is not enough memory for the medium.");
    }
}

Data MediumBody::finish() {
    if (!file_) return Data::take(std::exchange(memory_, {}));
    return Data::mapFile(file_->path(), &failure_);
}

}  // namespace ostrel
