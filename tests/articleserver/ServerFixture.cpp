#include "tests/articleserver/ServerFixture.h"

#include <fstream>

namespace articleserver {

namespace {

Answer answerOf(const httplib::Result& result) {
    Answer answer;
    if (!result) return answer;
    answer.status = result->status;
    answer.body = result->body;
    answer.headers = result->headers;
    answer.json = nlohmann::json::parse(result->body, nullptr, false);
    return answer;
}

httplib::Headers withCookies(httplib::Headers headers, const std::string& cookies) {
    if (!cookies.empty()) headers.emplace("Cookie", cookies);
    return headers;
}

}  // namespace

std::string Answer::header(const std::string& name) const {
    auto found = headers.find(name);
    return found == headers.end() ? std::string() : found->second;
}

std::string Answer::cookie(const std::string& name) const {
    auto [first, last] = headers.equal_range("Set-Cookie");
    for (auto header = first; header != last; ++header) {
        if (header->second.starts_with(name + "=")) return header->second.substr(0, header->second.find(';'));
    }
    return {};
}

std::string exifSegmentWith(int orientation) {
    std::string segment("Exif\0\0MM\0\x2A\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0", 25);
    segment += static_cast<char>(orientation);
    return segment + std::string(6, '\0');
}

std::string withOrientation(const std::string& jpeg, int orientation) {
    const std::string segment = exifSegmentWith(orientation);
    // The segment follows the marker of the start; its length counts the two bytes of the length, too.
    const std::string head{'\xFF', '\xE1', '\0', static_cast<char>(segment.size() + 2)};
    return jpeg.substr(0, 2) + head + segment + jpeg.substr(2);
}

std::string bytesOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

ServerResult<std::unique_ptr<ArticleServer>> ServerTest::tryStart() {
    ArticleServerOptions options;
    options.dataFolder = folder_.path();
    options.publicUrl = publicUrl_;
    options.sampleFolder = sampleFolder_;
    options.now = [this] { return now_.load(); };
    return ArticleServer::start(options);
}

void ServerTest::start() {
    server_.reset();
    auto started = tryStart();
    ASSERT_TRUE(started) << started.failure().text;
    server_ = std::move(*started);
}

Answer ServerTest::get(const std::string& path, const std::string& cookies, httplib::Headers headers) {
    httplib::Client client("127.0.0.1", server_->port());
    return answerOf(client.Get(path, withCookies(std::move(headers), cookies)));
}

Answer ServerTest::post(const std::string& path, const httplib::Params& form, const std::string& cookies) {
    httplib::Client client("127.0.0.1", server_->port());
    return answerOf(client.Post(path, withCookies({}, cookies), form));
}

Answer ServerTest::upload(const std::string& path, const httplib::MultipartFormDataItems& parts,
                          const std::string& cookies, httplib::Headers headers) {
    httplib::Client client("127.0.0.1", server_->port());
    return answerOf(client.Post(path, withCookies(std::move(headers), cookies), parts));
}

std::string ServerTest::signUp(const std::string& name, const std::string& password) {
    Answer answer = post("/account/sign_up", {{"name", name}, {"password", password}});
    EXPECT_EQ(answer.status, 200) << answer.body;
    return answer.cookie("ostrel_session");
}

std::int64_t ServerTest::userId(const std::string& name) {
    auto user = store().userNamed(name);
    if (user && *user) return (*user)->id;
    auto added = store().addUser({0, name, "", ""}, now_);
    EXPECT_TRUE(added);
    return *added;
}

std::int64_t ServerTest::addArticle(const std::string& author, const std::string& title, const std::string& text,
                                    bool openComment) {
    StoredArticle article;
    article.authorId = userId(author);
    article.title = title;
    article.text = text;
    article.modified = now_;
    article.openComment = openComment;
    auto id = store().addArticle(article);
    EXPECT_TRUE(id);
    return *id;
}

std::string ServerTest::addMedia(const std::string& bytes, const std::string& extension) {
    std::string number = std::to_string(++addedMedia_);
    std::string name = std::string(32 - number.size(), 'a') + number + "." + extension;
    std::ofstream(mediaFolder() / name, std::ios::binary) << bytes;
    return name;
}

}  // namespace articleserver
