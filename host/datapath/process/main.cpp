// SPDX-License-Identifier: Apache-2.0
// qvs-switchd: the data path of an emulated host. The emulated kernel starts it, with its socket as
// descriptor 3.
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstring>
#include <exception>

#include "datapath/process/datapath.h"
#include "datapath/process/kernel_link.h"
#include "datapath/process/log.h"
#include "datapath/process/loop.h"
#include "datapath/process/namespaces.h"
#include "datapath/process/sessions.h"

#include <sys/socket.h>

namespace qvs::datapath {

namespace {

// The parts refer to each other: facts go to the kernel, and its requests to the parts.
class Process {
  public:
    explicit Process(wire::File kernel)
        : kernel_(
              loop_, std::move(kernel),
              {[this](const std::string &directory, const wire::File &memory) { start(directory, memory); },
               [this](const std::string &name, wire::File file) {
                   namespaces_.restore(name, std::move(file));
               },
               [this](std::string_view configuration) { dataPath_.configure(configuration); }}),
          namespaces_(loop_, [this](const std::string &name, int file) { kernel_.keep(name, file); }),
          dataPath_(loop_, kernel_, namespaces_),
          sessions_(loop_, dataPath_, namespaces_) {}

    int run() {
        loop_.run([this] { dataPath_.endOfTurn(); });
        return failed_ ? 1 : 0;
    }

  private:
    void start(const std::string &directory, const wire::File &memory) {
        try {
            failed_ = !dataPath_.start(directory, memory);
            if (!failed_) sessions_.listen(directory);
        } catch (const AttachmentError &error) {
            warn("{}", error.what());
            failed_ = true;
        }
        if (failed_) loop_.stop();
    }

    Loop loop_;
    bool failed_ = false;
    KernelLink kernel_;
    Namespaces namespaces_;
    DataPath dataPath_;
    Sessions sessions_;
};

int socketGiven(int argc, char **argv) {
    if (argc == 1) return 3;
    if (argc == 3 && strcmp(argv[1], "--kernel") == 0) return atoi(argv[2]);
    return -1;
}

bool isSocket(int file) {
    struct stat status {};
    return fstat(file, &status) == 0 && S_ISSOCK(status.st_mode);
}

void prepare() {
    signal(SIGPIPE, SIG_IGN);
    // Sockets and capture files are for this user alone.
    umask(077);
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

}  // namespace

}  // namespace qvs::datapath

int main(int argc, char **argv) {
    using namespace qvs::datapath;
    const int kernel = socketGiven(argc, argv);
    if (!isSocket(kernel)) {
        fputs("usage: qvs-switchd [--kernel FD]\nThe emulated host starts this program: use qvs-host.\n",
              stderr);
        return 2;
    }
    prepare();
    try {
        return Process(qvs::wire::File(kernel)).run();
    } catch (const std::exception &error) {
        warn("the data path ends: {}", error.what());
        return 1;
    }
}
