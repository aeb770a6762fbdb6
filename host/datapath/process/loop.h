// SPDX-License-Identifier: Apache-2.0
// The event loop of the data path. Each turn serves every ready file once, so that a handler that does a
// bounded amount of work delays nobody.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

#include "datapath/switch.h"
#include "wire/file.h"

namespace qvs::datapath {

class Loop : private wire::Noncopyable {
  public:
    using Handler = std::function<void(uint32_t events)>;
    using Action = std::function<void()>;

    Loop();

    // Calls the handler when one of the epoll events happens on a file.
    void watch(int file, uint32_t events, Handler handler);
    // Changes the events of a file that is watched.
    void change(int file, uint32_t events);
    // Must be called before the file is closed. Handlers may call it for their own file.
    void forget(int file);

    // Calls an action once. 0 as the time means the next turn. Returns a number for `cancel`.
    uint64_t at(Time time, Action action);
    void cancel(uint64_t timer);
    // Calls an action after the handlers of this turn, to destroy what a handler must not destroy itself.
    void later(Action action) { later_.push_back(std::move(action)); }

    // The time of this turn.
    Time now() const { return now_; }
    // Serves until `stop`, and calls `endOfTurn` after each turn.
    void run(const Action &endOfTurn);
    void stop() { running_ = false; }

  private:
    struct Watch {
        int file;
        Handler handler;
    };

    void runTimers();
    void runLater();
    int timeout() const;

    wire::File epoll_;
    bool running_ = true;
    Time now_ = 0;
    uint64_t last_ = 0;
    std::unordered_map<uint64_t, std::shared_ptr<Watch>> watches_;
    std::unordered_map<int, uint64_t> byFile_;
    std::map<std::pair<Time, uint64_t>, Action> timers_;
    std::unordered_map<uint64_t, Time> timerTimes_;
    std::vector<Action> later_;
};

}  // namespace qvs::datapath
