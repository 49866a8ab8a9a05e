#include "articleserver/routes/ArticleServiceParts.h"

#include <array>
#include <cctype>
#include <cstdio>

namespace articleserver {

namespace {

constexpr std::size_t descriptionCharacters = 160;

/// The text as HTML. An empty line ends a paragraph, other lines get a break; CRLF, CR or LF ends a line.
std::string paragraphs(std::string_view text) {
    std::string html;
    std::string paragraph;
    auto close = [&] {
        if (!paragraph.empty()) html += "<p dir=\"auto\">" + paragraph + "</p>\n";
        paragraph.clear();
    };
    while (!text.empty()) {
        std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
        std::string line = trimmedText(text.substr(0, end));
        if (line.empty()) {
            close();
        } else {
            if (!paragraph.empty()) paragraph += "<br>\n";
            paragraph += escapedHtml(line);
        }
        if (text.substr(end).starts_with("\r\n")) ++end;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    close();
    return html;
}

/// The first characters of the text, on one line.
std::string summary(std::string_view text, std::size_t characters) {
    std::string line;
    std::size_t count = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        bool startsCharacter = (static_cast<unsigned char>(text[at]) & 0xC0) != 0x80;
        if (startsCharacter && count++ == characters) {
            line += "…";
            break;
        }
        line += text[at] == '\r' || text[at] == '\n' ? ' ' : text[at];
    }
    return trimmedText(line);
}

std::string duration(double seconds) {
    auto total = static_cast<long>(seconds + 0.5);
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%ld:%02ld", total / 60, total % 60);
    return text.data();
}

std::string document(std::string_view title, std::string_view head, std::string_view body) {
    std::string html = "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>";
    html += escapedHtml(title);
    html += "</title>\n";
    html += head;
    html += "<link rel=\"stylesheet\" href=\"/article.css\">\n</head>\n<body>\n<main>\n";
    html += body;
    html += "</main>\n</body>\n</html>\n";
    return html;
}

std::string figure(const std::string& media, const std::string& caption) {
    std::string html = "<figure>" + media;
    if (!caption.empty()) html += "<figcaption dir=\"auto\">" + escapedHtml(caption) + "</figcaption>";
    return html + "</figure>\n";
}

std::string byline(std::int64_t author, std::string_view name, ServerTime date) {
    return "<p class=\"byline\"><img class=\"avatar\" src=\"/account/avatar/" + std::to_string(author) +
           "\" alt=\"\" width=\"40\" height=\"40\" loading=\"lazy\"><span><span class=\"author\" "
           "dir=\"auto\">" +
           escapedHtml(name) + "</span><br><time datetime=\"" + isoDate(date) + "\">" + readableDate(date) +
           "</time></span></p>\n";
}

std::string commentSection(const CommentPage& comments) {
    if (comments.comments.empty()) return {};
    std::string html = "<section>\n<h2>Comments</h2>\n";
    if (comments.hasMore) html += "<p class=\"note\">Only the latest are shown.</p>\n";
    for (const StoredComment& comment : comments.comments) {
        html += "<article class=\"comment\">\n" + byline(comment.authorId, comment.authorName, comment.date) +
                paragraphs(comment.text) + "</article>\n";
    }
    return html + "</section>\n";
}

}  // namespace

std::string articleHtml(const StoredArticle& article, const CommentPage& comments, const std::string& baseUrl) {
    const std::string id = std::to_string(article.id);
    const std::string title = article.title.empty() ? summary(article.text, 60) : summary(article.title, 300);
    std::string head = "<meta name=\"description\" content=\"" +
                       escapedHtml(summary(article.text, descriptionCharacters)) + "\">\n" +
                       "<link rel=\"canonical\" href=\"" + escapedHtml(baseUrl) + "/article/" + id + "\">\n" +
                       "<meta property=\"og:type\" content=\"article\">\n" + "<meta property=\"og:title\" content=\"" +
                       escapedHtml(title) + "\">\n";
    if (!article.images.empty()) {
        head += "<meta property=\"og:image\" content=\"" + escapedHtml(baseUrl) + "/media/" +
                escapedHtml(article.images.front().file) + "\">\n";
    }

    std::string body = "<article>\n<header>\n";
    if (!article.title.empty()) body += "<h1 dir=\"auto\">" + escapedHtml(article.title) + "</h1>\n";
    body += byline(article.authorId, article.authorName, article.modified) + "</header>\n";
    body += paragraphs(article.text);
    for (const StoredImage& image : article.images) {
        body += figure("<img src=\"/media/" + escapedHtml(image.file) + "\" alt=\"" + escapedHtml(image.text) +
                           "\" width=\"" + std::to_string(image.width) + "\" height=\"" + std::to_string(image.height) +
                           "\" loading=\"lazy\">",
                       image.text);
    }
    for (const StoredVideo& video : article.videos) {
        body += figure("<video src=\"/media/" + escapedHtml(video.file) + "\" poster=\"/media/" +
                           escapedHtml(video.thumbnail) + "\" width=\"" + std::to_string(video.width) + "\" height=\"" +
                           std::to_string(video.height) + "\" controls preload=\"none\" title=\"" +
                           duration(video.duration) + "\"></video>",
                       video.text);
    }
    body += "<footer>" + std::to_string(article.likes) + (article.likes == 1 ? " like" : " likes") + " · " +
            std::to_string(article.comments) + (article.comments == 1 ? " comment" : " comments") +
            "</footer>\n</article>\n";
    body += commentSection(comments);
    return document(title, head, body);
}

std::string notFoundHtml() {
    return document("Article not found", "<meta name=\"robots\" content=\"noindex\">\n",
                    "<h1>Article not found</h1>\n<p>It may have been removed by its author.</p>\n");
}

std::string_view articleStyle() {
    return R"css(:root { color-scheme: light dark; --text: #1d1d1f; --quiet: #6e6e73; --ground: #ffffff; --line: #e3e3e8; }
@media (prefers-color-scheme: dark) {
  :root { --text: #f0f0f3; --quiet: #a1a1a8; --ground: #1a1a1d; --line: #36363c; }
}
* { box-sizing: border-box; }
html { -webkit-text-size-adjust: 100%; text-size-adjust: 100%; }
body {
  margin: 0; background: var(--ground); color: var(--text);
  font: 1.0625rem/1.7 "PingFang SC", "Noto Sans CJK SC", "Noto Sans SC", system-ui, sans-serif;
}
main { max-width: 42rem; margin: 0 auto; padding: clamp(1.25rem, 5vw, 3.5rem) clamp(1rem, 5vw, 2rem); }
h1 { margin: 0 0 1.25rem; font-size: clamp(1.5rem, 5vw, 2.125rem); line-height: 1.3; font-weight: 600; }
h1, p, figcaption, .author { overflow-wrap: anywhere; }
p { margin: 0 0 1.1em; }
header { border-bottom: 1px solid var(--line); margin-bottom: 1.75rem; padding-bottom: 1.25rem; }
.byline { display: flex; align-items: center; gap: 0.75rem; margin: 0; font-size: 0.875rem; line-height: 1.45; }
.avatar { border-radius: 50%; flex: none; }
.author { font-weight: 500; font-size: 0.9375rem; }
time, figcaption, footer, .note { color: var(--quiet); }
h2 { margin: 2.5rem 0 1.25rem; font-size: 1.25rem; line-height: 1.3; font-weight: 600; }
.comment { border-bottom: 1px solid var(--line); margin-bottom: 1.25rem; padding-bottom: 0.25rem; }
.comment:last-child { border-bottom: 0; }
.comment .byline { margin-bottom: 0.6rem; }
.note { font-size: 0.875rem; }
figure { margin: 2rem 0; }
figure img, figure video { display: block; width: auto; max-width: 100%; height: auto; max-height: 90vh; margin: 0 auto; border-radius: 6px; }
figcaption { margin-top: 0.6rem; font-size: 0.875rem; line-height: 1.5; text-align: center; }
footer { border-top: 1px solid var(--line); margin-top: 2.5rem; padding-top: 1rem; font-size: 0.875rem; }
)css";
}

}  // namespace articleserver
