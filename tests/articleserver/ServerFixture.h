#pragma once

#include "articleserver/ArticleServer.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <httplib.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace articleserver {

using ostrel::TemporaryFolder;

struct Answer {
    int status = 0;  ///< 0: the connection failed
    std::string body;
    httplib::Headers headers;
    nlohmann::json json;  ///< discarded when the body is no JSON

    std::string header(const std::string& name) const;
    /// "name=value" of a cookie that the answer sets, or empty.
    std::string cookie(const std::string& name) const;
};

/// The content of a JPEG's APP1 segment that holds an orientation (Exif 2.32, tag 0x0112) and nothing else.
std::string exifSegmentWith(int orientation);
/// The JPEG file with this orientation noted in it.
std::string withOrientation(const std::string& jpeg, int orientation);

std::string bytesOf(const std::filesystem::path& file);

/// A server on a port that the system chooses, over an empty folder, with a clock that tests set.
class ServerTest : public testing::Test {
protected:
    static constexpr ServerTime startTime = 1'795'228'358'123;  // 2026-11-21T02:32:38.123Z

    void SetUp() override { start(); }
    ServerResult<std::unique_ptr<ArticleServer>> tryStart();
    /// Ends a running server first.
    void start();
    void stop() { server_.reset(); }

    Answer get(const std::string& path, const std::string& cookies = {}, httplib::Headers headers = {});
    Answer post(const std::string& path, const httplib::Params& form, const std::string& cookies = {});
    Answer upload(const std::string& path, const httplib::MultipartFormDataItems& parts, const std::string& cookies,
                  httplib::Headers headers = {});

    /// Signs a user up and returns the session cookie.
    std::string signUp(const std::string& name, const std::string& password = "long enough");
    std::int64_t userId(const std::string& name);
    std::int64_t addArticle(const std::string& author, const std::string& title = "Title",
                            const std::string& text = "Text", bool openComment = true);

    ArticleStore& store() { return server_->store(); }
    std::filesystem::path mediaFolder() const { return folder_.path("media"); }
    /// The number of files in the media folder, also of partial ones.
    std::size_t mediaCount() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(mediaFolder()), {}));
    }
    /// Writes a file with a valid name into the media folder.
    std::string addMedia(const std::string& bytes, const std::string& extension);

    TemporaryFolder folder_;
    std::atomic<ServerTime> now_{startTime};
    std::string publicUrl_;
    std::optional<std::filesystem::path> sampleFolder_;
    std::unique_ptr<ArticleServer> server_;
    int addedMedia_ = 0;
};

}  // namespace articleserver
