// SPDX-License-Identifier: Apache-2.0
// The event loop of the data path.
#include "datapath/process/loop.h"

#include <sys/epoll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <system_error>

namespace qvs::datapath {

namespace {

Time clockNow() {
    timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<Time>(time.tv_sec) * 1000 + static_cast<Time>(time.tv_nsec) / 1'000'000;
}

}  // namespace

Loop::Loop() : epoll_(epoll_create1(EPOLL_CLOEXEC)), now_(clockNow()) {
    if (!epoll_) throw std::system_error(errno, std::generic_category(), "epoll_create1");
}

void Loop::watch(int file, uint32_t events, Handler handler) {
    const uint64_t number = ++last_;
    epoll_event event{};
    event.events = events;
    event.data.u64 = number;
    if (epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, file, &event) != 0)
        throw std::system_error(errno, std::generic_category(), "epoll_ctl");
    watches_[number] = std::make_shared<Watch>(Watch{file, std::move(handler)});
    byFile_[file] = number;
}

void Loop::change(int file, uint32_t events) {
    const auto found = byFile_.find(file);
    if (found == byFile_.end()) return;
    epoll_event event{};
    event.events = events;
    event.data.u64 = found->second;
    epoll_ctl(epoll_.get(), EPOLL_CTL_MOD, file, &event);
}

void Loop::forget(int file) {
    const auto found = byFile_.find(file);
    if (found == byFile_.end()) return;
    epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, file, nullptr);
    watches_.erase(found->second);
    byFile_.erase(found);
}

uint64_t Loop::at(Time time, Action action) {
    const uint64_t number = ++last_;
    timers_[{time, number}] = std::move(action);
    timerTimes_[number] = time;
    return number;
}

void Loop::cancel(uint64_t timer) {
    const auto found = timerTimes_.find(timer);
    if (found == timerTimes_.end()) return;
    timers_.erase({found->second, timer});
    timerTimes_.erase(found);
}

// Timers that are added by an action wait for the next turn, even if they are due.
void Loop::runTimers() {
    const uint64_t newest = last_;
    auto next = timers_.begin();
    while (next != timers_.end() && next->first.first <= now_) {
        if (next->first.second > newest) {
            ++next;
            continue;
        }
        const Action action = std::move(next->second);
        timerTimes_.erase(next->first.second);
        timers_.erase(next);
        action();
        // The action can have changed the map.
        next = timers_.begin();
    }
}

void Loop::runLater() {
    while (!later_.empty()) {
        std::vector<Action> actions;
        actions.swap(later_);
        for (const Action &action : actions)
            action();
    }
}

int Loop::timeout() const {
    constexpr Time kLongest = 60'000;
    if (!later_.empty()) return 0;
    if (timers_.empty()) return static_cast<int>(kLongest);
    const Time next = timers_.begin()->first.first;
    return next <= now_ ? 0 : static_cast<int>(std::min(next - now_, kLongest));
}

void Loop::run(const Action &endOfTurn) {
    std::array<epoll_event, 256> events;
    while (running_) {
        const int count = epoll_wait(epoll_.get(), events.data(), static_cast<int>(events.size()), timeout());
        if (count < 0 && errno != EINTR)
            throw std::system_error(errno, std::generic_category(), "epoll_wait");
        now_ = clockNow();
        for (int i = 0; i < count && running_; ++i) {
            const epoll_event &event = events[static_cast<size_t>(i)];
            // The structure is packed, so that no reference can be bound to its members.
            const uint64_t number = event.data.u64;
            const auto found = watches_.find(number);
            // An earlier handler of this turn can have closed the file.
            if (found == watches_.end()) continue;
            const std::shared_ptr<Watch> kept = found->second;
            kept->handler(event.events);
        }
        if (!running_) break;
        runTimers();
        runLater();
        endOfTurn();
    }
}

}  // namespace qvs::datapath
