#include "tests/articleserver/ServerFixture.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <optional>
#include <thread>

namespace articleserver {

namespace {

/// A connection for requests that no HTTP client would send.
class RawConnection final {
public:
    explicit RawConnection(int port) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        isOpen_ = ::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    }
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;
    ~RawConnection() { ::close(socket_); }

    bool send(std::string_view bytes) {
        return isOpen_ &&
               ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
    }

    /// All bytes until the server closes; absent when it does not close within two seconds.
    std::optional<std::string> readToEnd() {
        std::string all;
        for (;;) {
            pollfd watched{socket_, POLLIN, 0};
            if (::poll(&watched, 1, 2000) <= 0) return std::nullopt;
            char buffer[4096];
            ssize_t count = ::recv(socket_, buffer, sizeof buffer, 0);
            if (count <= 0) return all;
            all.append(buffer, static_cast<std::size_t>(count));
        }
    }

private:
    int socket_;
    bool isOpen_ = false;
};

class HttpLimitsTest : public ServerTest {
protected:
    std::string exchange(const std::string& request) {
        RawConnection connection(server_->port());
        EXPECT_TRUE(connection.send(request));
        auto answer = connection.readToEnd();
        EXPECT_TRUE(answer) << "still open after " << request.substr(0, 80);
        return answer.value_or("");
    }
};

int statusOf(const std::string& answer) { return answer.starts_with("HTTP/1.1 ") ? std::stoi(answer.substr(9)) : 0; }

const std::string list = "GET /article/articles_json.html HTTP/1.1\r\nHost: a\r\n";
const std::string close = "Connection: close\r\n\r\n";

}  // namespace

TEST_F(HttpLimitsTest, RequestsOutOfBoundsAreAnsweredAndClosed) {
    std::string manyHeaders, manyFields = "GET /article/articles_json.html?";
    for (int count = 0; count < 70; ++count) manyHeaders += "X-" + std::to_string(count) + ": y\r\n";
    for (int count = 0; count < 33; ++count) manyFields += "a" + std::to_string(count) + "=1&";
    const std::string signIn = "POST /account/sign_in HTTP/1.1\r\n", rest = " HTTP/1.1\r\nHost: a\r\n" + close;
    struct Case {
        std::string request;
        int status;
    };
    for (const Case& tried : {Case{list + close, 200},
                              Case{"GET //article/articles_json.html" + rest, 200},
                              Case{"GET article/articles_json.html" + rest, 200},
                              Case{"GET /" + rest, 404},
                              Case{"GET /article/" + rest, 404},
                              Case{"GET /article/articles_json.html/" + rest, 404},
                              Case{"GET /article/articles_json.html?before=%zz" + rest, 400},
                              Case{"GET /article/articles_json.html?a=%C3%28" + rest, 400},
                              Case{"GET /article/like_article_json.html?id=1&id=1" + rest, 400},
                              Case{"GET /%FF" + rest, 400},
                              Case{manyFields + rest, 400},
                              Case{"DELETE /article/articles_json.html" + rest, 405},
                              Case{"POST /article/remove?id=1" + rest, 405},
                              Case{"GET /account/sign_in" + rest, 405},
                              Case{"OPTIONS /account/me" + rest, 405},
                              Case{"PATCH /article/1" + rest, 405},
                              Case{"PUT /account/me HTTP/1.1\r\nContent-Length: 3\r\n\r\nabc", 405},
                              Case{"BREW /article/1" + rest, 400},
                              Case{"hello\r\n\r\n", 400},
                              Case{list + "X: y\r\n folded\r\n\r\n", 400},
                              Case{list + "X: control\x01\r\n\r\n", 400},
                              Case{list + "X : blank\r\n\r\n", 400},
                              Case{"GET /" + std::string(5000, 'x') + " HTTP/1.1\r\n\r\n", 414},
                              Case{std::string(300'000, 'x'), 414},
                              Case{list + "X: " + std::string(9000, 'x') + "\r\n\r\n", 431},
                              Case{list + "X: " + std::string(100'000, 'x'), 431},
                              Case{list + manyHeaders + "\r\n", 431},
                              Case{signIn + "Transfer-Encoding: chunked\r\n\r\n0\r\n\r\n", 411},
                              Case{signIn + "Content-Length: 1\r\nContent-Length: 2\r\n\r\nx", 400},
                              Case{signIn + "Content-Length: -1\r\n\r\n", 400},
                              Case{signIn + "Content-Encoding: gzip\r\nContent-Length: 1\r\n\r\nx", 415},
                              Case{signIn + "Content-Length: 99999999999\r\n\r\n" + std::string(100'000, 'x'), 413},
                              Case{list + "Content-Length: 3\r\n\r\nabc", 413},
                              Case{"POST /nothing HTTP/1.1\r\nContent-Length: 9999999\r\n\r\nabc", 404},
                              Case{signIn + "Content-Length: 29\r\n" + close + "name=%FF%FE&password=12345678", 400}}) {
        const std::string answer = exchange(tried.request);
        EXPECT_EQ(statusOf(answer), tried.status) << tried.request.substr(0, 80) << ": " << answer;
        const auto has = [&](const char* text) { return answer.find(text) != std::string::npos; };
        EXPECT_EQ(has("\r\n\r\n{\"success\":false,\"error\":\""), tried.status != 200) << answer;
        EXPECT_EQ(has("\r\nAllow: "), tried.status == 405) << answer;
    }
    EXPECT_EQ(get("/article/articles_json.html").status, 200);
}

TEST_F(HttpLimitsTest, RequestsOfOneConnectionDoNotMix) {
    std::string form = "name=Ada&password=long+enough";
    std::string signUp =
        "POST /account/sign_up HTTP/1.1\r\nHost: a\r\nContent-Type: application/x-www-form-urlencoded\r\n"
        "Content-Length: " +
        std::to_string(form.size()) + "\r\n\r\n" + form;
    // Three requests arrive together, and then one in pieces of a byte.
    std::string answer = exchange(list + "\r\n" + signUp + "\r\n\r\n" + list + close);
    EXPECT_NE(answer.find("\"user\":{\"id\":1,\"name\":\"Ada\"}"), std::string::npos) << answer;
    std::size_t answers = 0;
    for (std::size_t at = answer.find("HTTP/1.1 200"); at != std::string::npos;
         at = answer.find("HTTP/1.1 200", at + 1))
        ++answers;
    EXPECT_EQ(answers, 3U);

    RawConnection connection(server_->port());
    for (char byte : list + close) ASSERT_TRUE(connection.send(std::string_view(&byte, 1)));
    EXPECT_EQ(statusOf(connection.readToEnd().value_or("")), 200);
}

TEST_F(HttpLimitsTest, ManySilentConnectionsDoNotKeepOthersOut) {
    std::vector<std::unique_ptr<RawConnection>> silent;
    for (int count = 0; count < 100; ++count) silent.push_back(std::make_unique<RawConnection>(server_->port()));
    auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(get("/article/articles_json.html").status, 200);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(8));
}

TEST_F(HttpLimitsTest, StopDoesNotWaitForOpenConnections) {
    RawConnection silent(server_->port());
    RawConnection halfway(server_->port());
    ASSERT_TRUE(halfway.send("GET /article/art"));
    httplib::Client idle("127.0.0.1", server_->port());
    idle.set_keep_alive(true);
    ASSERT_TRUE(idle.Get("/account/me"));
    auto begin = std::chrono::steady_clock::now();
    stop();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
    EXPECT_TRUE(silent.readToEnd());
}

}  // namespace articleserver
