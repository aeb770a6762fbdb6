// SPDX-License-Identifier: Apache-2.0
// A store of one member for a test, on a free port of the loopback interface.
#pragma once

#include <arpa/inet.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace qvs::test {

inline int freePort() {
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    bind(descriptor, reinterpret_cast<sockaddr *>(&address), size);
    getsockname(descriptor, reinterpret_cast<sockaddr *>(&address), &size);
    close(descriptor);
    return ntohs(address.sin_port);
}

inline bool answers(int port) {
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<uint16_t>(port));
    const bool connected = connect(descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
    close(descriptor);
    return connected;
}

class Etcd {
  public:
    explicit Etcd(std::vector<std::string> options = {}, const char *scheme = "http") {
        port_ = freePort();
        url_ = std::string(scheme) + "://127.0.0.1:" + std::to_string(port_);
        const std::string peer = "http://127.0.0.1:" + std::to_string(freePort());
        char directory[] = "/tmp/qvs-etcd.XXXXXX";
        directory_ = mkdtemp(directory);
        words_ = {"etcd", "--log-level=error", "--unsafe-no-fsync", "--data-dir=" + directory_};
        for (const char *whose : {"--listen-client-urls=", "--advertise-client-urls="})
            words_.push_back(whose + url_);
        for (const char *whose :
             {"--listen-peer-urls=", "--initial-advertise-peer-urls=", "--initial-cluster=default="})
            words_.push_back(whose + peer);
        words_.insert(words_.end(), options.begin(), options.end());
        start();
    }
    ~Etcd() {
        stop();
        if (std::system(("rm -rf " + directory_).c_str()) != 0) std::abort();
    }
    Etcd(const Etcd &) = delete;
    Etcd &operator=(const Etcd &) = delete;

    static bool isInstalled() { return std::system("command -v etcd etcdctl >/dev/null") == 0; }

    const std::string &url() const { return url_; }

    void start() {
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", 1, 0);
        posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", 1, 0);
        std::vector<char *> pointers;
        for (std::string &word : words_)
            pointers.push_back(word.data());
        pointers.push_back(nullptr);
        posix_spawnp(&process_, "etcd", &actions, nullptr, pointers.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        for (int i = 0; i < 200 && !answers(port_); i++)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    // SIGSTOP has stopped all threads when this returns; until then, they could answer a request.
    void signal(int number) const {
        kill(process_, number);
        if (number == SIGSTOP) waitpid(process_, nullptr, WUNTRACED);
    }
    void stop() {
        if (process_ == 0) return;
        signal(SIGKILL);
        waitpid(process_, nullptr, 0);
        process_ = 0;
    }
    // Runs etcdctl with these words. Returns whether it succeeds.
    bool control(const std::string &words) const {
        return std::system(("ETCDCTL_API=3 etcdctl --endpoints " + url_ + " " + words + " >/dev/null 2>&1")
                               .c_str()) == 0;
    }

  private:
    int port_ = 0;
    pid_t process_ = 0;
    std::string url_;
    std::string directory_;
    std::vector<std::string> words_;
};

}  // namespace qvs::test
