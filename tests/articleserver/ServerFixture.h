#pragma once

#include "articleserver/ArticleServer.h"

#include <gtest/gtest.h>
#include <httplib.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

namespace articleserver {

/// A folder of its own below the system's temporary folder, gone with the object.
class TemporaryFolder final {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

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

/// A server on a port of its own over an empty folder, with a clock that tests turn.
class ServerTest : public testing::Test {
protected:
    static constexpr ServerTime startTime = 1'795'228'358'123;  // 2026-11-21T02:32:38.123Z

    void SetUp() override { start(); }
    void start();
    void stop() { server_.reset(); }

    Answer get(const std::string& path, const std::string& cookies = {}, httplib::Headers headers = {});
    Answer head(const std::string& path);
    Answer post(const std::string& path, const httplib::Params& form, const std::string& cookies = {});
    Answer uploadAvatar(const std::string& bytes, const std::string& cookies,
                        const std::string& partName = "image.jpg");

    /// Signs up and answers the session cookie.
    std::string signUp(const std::string& name, const std::string& password = "long enough");
    std::int64_t userId(const std::string& name);
    std::int64_t addArticle(const std::string& author, const std::string& title = "Title",
                            const std::string& text = "Text", bool openComment = true);

    ArticleStore& store() { return server_->store(); }
    std::filesystem::path mediaFolder() const { return folder_.path() / "media"; }
    /// Puts a file among the media under a valid name.
    std::string addMedia(const std::string& bytes, const std::string& extension);

    TemporaryFolder folder_;
    std::atomic<ServerTime> now_{startTime};
    std::string publicUrl_;
    std::unique_ptr<ArticleServer> server_;
    int mediaCount_ = 0;
};

}  // namespace articleserver
