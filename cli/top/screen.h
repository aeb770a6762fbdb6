// SPDX-License-Identifier: Apache-2.0
// The screen: what it shows, and what keys do to it.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "top/table.h"

namespace qvs::top {

class Screen {
  public:
    // Opens the terminal. Throws Failure when its type is not known.
    Screen();
    // Gives it back as it was.
    ~Screen();
    Screen(const Screen &) = delete;
    Screen &operator=(const Screen &) = delete;

    void take(const Sample &sample);
    // Handles the keys that wait. False when one of them ends the program.
    [[nodiscard]] bool handleKeys();
    void draw();

  private:
    bool handle(int key);
    bool handleInFilter(int key);
    void move(long rows);
    void nextSort(long step);
    void put(int row, const std::string &text, unsigned long attributes = 0) const;
    std::string status() const;
    size_t room() const;  // for rows of ports

    Sample sample_;  // what is shown; while paused, not the latest
    Sample latest_;
    Choice choice_;
    std::vector<const Port *> ports_;
    size_t first_ = 0;  // of the ports that are shown
    bool looked_ = false;
    bool paused_ = false;
    bool help_ = false;
    bool typing_ = false;  // the filter
};

}  // namespace qvs::top
