#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace ostrel {

/// A child process with its outputs in pipes; killed and reaped with the object.
class ChildProcess final {
public:
    explicit ChildProcess(std::vector<std::string> arguments) {
        int out[2], err[2];
        EXPECT_EQ(::pipe2(out, O_CLOEXEC), 0);
        EXPECT_EQ(::pipe2(err, O_CLOEXEC), 0);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, out[1], 1);
        posix_spawn_file_actions_adddup2(&actions, err[1], 2);
        std::vector<char*> argv;
        for (std::string& argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        EXPECT_EQ(::posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        ::close(out[1]);
        ::close(err[1]);
        out_ = out[0];
        err_ = err[0];
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() {
        if (pid_ > 0 && !isReaped_) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
        ::close(out_);
        ::close(err_);
    }

    void signal(int number) { ::kill(pid_, number); }
    std::string line(int milliseconds = 10'000) { return read(out_, true, milliseconds); }
    /// Both to their ends.
    std::string rest() { return read(out_, false); }
    std::string errors() { return read(err_, false); }

    /// The exit status, or absent when the process goes on for ten seconds or was killed.
    std::optional<int> exitStatus() {
        for (int wait = 0; wait < 1000; ++wait) {
            int status = 0;
            if (::waitpid(pid_, &status, WNOHANG) == pid_) {
                isReaped_ = true;
                return WIFEXITED(status) ? std::optional(WEXITSTATUS(status)) : std::nullopt;
            }
            ::usleep(10'000);
        }
        return std::nullopt;
    }

private:
    static std::string read(int descriptor, bool toLineEnd, int milliseconds = 10'000) {
        std::string text;
        for (;;) {
            pollfd watched{descriptor, POLLIN, 0};
            if (::poll(&watched, 1, milliseconds) <= 0) return text + "(nothing more came)";
            char byte = 0;
            if (::read(descriptor, &byte, 1) != 1 || (toLineEnd && byte == '\n')) return text;
            text += byte;
        }
    }

    pid_t pid_ = -1;
    bool isReaped_ = false;
    int out_ = -1, err_ = -1;
};

}  // namespace ostrel
