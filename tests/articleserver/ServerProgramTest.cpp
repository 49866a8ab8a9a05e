#include "tests/articleserver/ServerFixture.h"
#include "tests/support/ChildProcess.h"

#include <csignal>
#include <fstream>
#include <vector>

namespace articleserver {

using ostrel::ChildProcess;

namespace {

const std::string binary = OSTREL_ARTICLE_SERVER_BINARY;

int portIn(const std::string& line) {
    const std::string start = "ostrel-article-server: listening on http://127.0.0.1:";
    EXPECT_TRUE(line.starts_with(start) && line.ends_with("/")) << line;
    return line.starts_with(start) ? std::atoi(line.c_str() + start.size()) : 0;
}

}  // namespace

TEST(ServerProgramTest, ServesTheSamplesUntilItIsTold) {
    TemporaryFolder folder;
    for (int number : {SIGTERM, SIGINT}) {
        ChildProcess server(
            {binary, "--data", folder.path("new/data"), "--port", "0", "--sample", OSTREL_RESOURCE_DIR "/samples"});
        httplib::Client client("127.0.0.1", portIn(server.line()));
        client.set_keep_alive(true);
        EXPECT_EQ(server.line(), "sample account: Ada Fern / snowdrop-teapot");
        EXPECT_EQ(server.line(), "sample account: Oskar Lind / ferry-lantern");
        const auto answer = client.Get("/article/articles_json.html");
        ASSERT_TRUE(answer);
        EXPECT_EQ(nlohmann::json::parse(answer->body)["results"].size(), 20U);
        server.signal(number);
        EXPECT_EQ(server.exitStatus(), 0);
        EXPECT_EQ(server.rest(), "");
        EXPECT_EQ(server.errors(), "");
    }
}

TEST(ServerProgramTest, AFullDiskIsAnErrorAndLeavesNoHalfFile) {
    TemporaryFolder folder;
    // Blocks of 512 bytes: no file may have more than 2 MiB.
    ChildProcess server({"/bin/sh", "-c", "ulimit -f 4096; exec \"$0\" --data \"$1\" --port 0", binary, folder.path()});
    httplib::Client client("127.0.0.1", portIn(server.line()));
    const auto signedUp =
        client.Post("/account/sign_up", httplib::Params{{"name", "Ada"}, {"password", "long enough"}});
    ASSERT_TRUE(signedUp);
    std::string cookie = signedUp->get_header_value("Set-Cookie");
    const httplib::Headers headers{{"Cookie", cookie.substr(0, cookie.find(';'))}};
    const httplib::Params article{{"title", "t"}, {"text", "t"}};
    ASSERT_TRUE(client.Post("/article/update_article_json.html", headers, article));
    for (const auto& [size, status] : {std::pair(1'000'000, 415), std::pair(9'000'000, 507)}) {
        const httplib::MultipartFormDataItems parts = {
            {"image.jpg", std::string(static_cast<std::size_t>(size), 'x'), "a", ""}};
        const auto answer = client.Post("/article/image_update?article_id=1&value=0", headers, parts);
        ASSERT_TRUE(answer) << size;
        EXPECT_EQ(answer->status, status) << answer->body;
        EXPECT_TRUE(std::filesystem::is_empty(folder.path("media")));
    }
    const auto list = client.Get("/article/articles_json.html");
    ASSERT_TRUE(list);
    EXPECT_EQ(list->status, 200);
}

TEST(ServerProgramTest, MistakesGetOneSentenceAndAStatus) {
    TemporaryFolder folder;
    TemporaryFolder used;
    ChildProcess first({binary, "--data", used.path(), "--port", "0"});
    std::string port = std::to_string(portIn(first.line()));
    std::string file = folder.path("file");
    std::ofstream(file) << "x";
    const std::string data = folder.path("data");

    struct Case {
        std::vector<std::string> arguments;
        int status;
        std::string part;
    };
    for (const Case& tried :
         {Case{{"--data", data, "--port", port}, 1, "Cannot listen on 127.0.0.1 port " + port},
          Case{{"--data", used.path()}, 1, "Another server is using the data folder"},
          Case{{"--data", file + "/below"}, 1, "data folder"}, Case{{"--data", "/proc/nowhere"}, 1, "data folder"},
          Case{{"--data", data, "--public-url", "ftp://x"}, 1, "public address"},
          Case{{"--data", data, "--host", "not.an.address.invalid"}, 1, "Cannot listen"},
          Case{{"--data", data, "--sample", file + "/below"}, 1, "Cannot read the sample file"},
          Case{{"--data", data, "--sample"}, 2, "--sample"}, Case{{"--data", data, "--port", "65536"}, 2, "--port"},
          Case{{"--data", data, "--port", "-1"}, 2, "--port"}, Case{{"--data", data, "--port", "http"}, 2, "--port"},
          Case{{"--data", data, "--unknown"}, 2, "--unknown"}, Case{{"--port", "0"}, 2, "--data"}}) {
        std::vector<std::string> arguments = {binary};
        arguments.insert(arguments.end(), tried.arguments.begin(), tried.arguments.end());
        ChildProcess server(arguments);
        EXPECT_EQ(server.exitStatus(), tried.status) << tried.part;
        std::string errors = server.errors();
        EXPECT_NE(errors.find(tried.part), std::string::npos) << errors;
        EXPECT_TRUE(errors.starts_with("ostrel-article-server: ")) << errors;
        EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
        EXPECT_EQ(server.rest(), "");
    }
}

TEST(ServerProgramTest, EndsWithItsParentWhenAsked) {
    TemporaryFolder folder;
    std::string data = folder.path();
    // The shell stays the parent, because a command follows.
    ChildProcess shell({"/bin/sh", "-c", "\"$0\" --data \"$1\" --exit-with-parent; exit 0", binary, data});
    int port = portIn(shell.line());
    shell.signal(SIGKILL);
    // The server holds the other end of the pipe until it ends.
    EXPECT_EQ(shell.rest(), "");
    httplib::Client client("127.0.0.1", port);
    EXPECT_FALSE(client.Get("/account/me"));
}

}  // namespace articleserver
