// SPDX-License-Identifier: Apache-2.0
#include "top/screen.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string_view>

// The names of its macros are common words.
#define NCURSES_NOMACROS 1
#define NCURSES_WIDECHAR 1
#include <curses.h>

#include "base/failure.h"
#include "base/text.h"

namespace qvs::top {
namespace {

constexpr int kControlL = 'L' - '@';
constexpr int kEscape = 27;
constexpr int kDelete = 127;
constexpr size_t kMostFilter = 64;
constexpr size_t kSorts = 7;

// Rows above the ports: status, sums, heading; and the one below.
constexpr int kAbove = 3;
constexpr int kBelow = 1;

struct SortKey {
    int key;
    Sort sort;
};
constexpr SortKey kSortKeys[] = {
    {'t', Sort::Total},      {'i', Sort::BitsIn},  {'o', Sort::BitsOut}, {'p', Sort::PacketsIn},
    {'P', Sort::PacketsOut}, {'d', Sort::Dropped}, {'n', Sort::Name},
};

constexpr std::string_view kHelp[] = {
    "",
    "  Order      t total bits     i bits in     o bits out",
    "             p packets in     P packets out d dropped     n name",
    "             < >  the column before or behind, r reversed",
    "  Ports      /    show those with a text in port, switch, client, VLAN or link",
    "             a    show or hide those without traffic",
    "  Rows       up, down, page up, page down, home, end",
    "  Screen     space  pause, or go on     ^L  draw anew",
    "  Leave      q, or ^C",
    "",
    "  Units      b/s: bits per second, p/s: packets per second, DROP/s: dropped p/s",
    "             k, M, G: thousands, millions, thousand millions",
    "             -: not known before the second look",
    "",
    "  Any key goes back.",
};

}  // namespace

Screen::Screen() {
    if (newterm(nullptr, stdout, stdin) == nullptr) {
        const char *type = std::getenv("TERM");
        fail(Exit::Failed, "the terminal type {} is not known; 'qvs top --once' prints text",
             inQuotes(type != nullptr ? type : ""));
    }
    cbreak();
    noecho();
    keypad(stdscr, TRUE);
    nodelay(stdscr, TRUE);
    set_escdelay(25);
    curs_set(0);
}

Screen::~Screen() {
    endwin();
}

void Screen::take(const Sample &sample) {
    latest_ = sample;
    looked_ = true;
    if (!paused_) sample_ = latest_;
}

size_t Screen::room() const {
    return static_cast<size_t>(std::max(LINES - kAbove - kBelow, 0));
}

void Screen::move(long rows) {
    const long most = std::max(static_cast<long>(ports_.size()) - static_cast<long>(room()), 0L);
    first_ = static_cast<size_t>(std::clamp(static_cast<long>(first_) + rows, 0L, most));
}

void Screen::nextSort(long step) {
    const auto now = static_cast<long>(choice_.sort);
    const auto count = static_cast<long>(kSorts);
    choice_.sort = static_cast<Sort>((now + step + count) % count);
}

bool Screen::handleKeys() {
    for (int key = getch(); key != ERR; key = getch())
        if (!handle(key)) return false;
    return true;
}

bool Screen::handleInFilter(int key) {
    if (key == '\n' || key == '\r' || key == KEY_ENTER) {
        typing_ = false;
    } else if (key == kEscape) {
        typing_ = false;
        choice_.filter.clear();
    } else if (key == KEY_BACKSPACE || key == kDelete || key == '\b') {
        std::string &filter = choice_.filter;
        while (!filter.empty() && (static_cast<unsigned char>(filter.back()) & 0xc0) == 0x80)
            filter.pop_back();
        if (!filter.empty()) filter.pop_back();
    } else if (key >= ' ' && key < 256 && choice_.filter.size() < kMostFilter) {
        choice_.filter += static_cast<char>(key);
    }
    first_ = 0;
    return true;
}

bool Screen::handle(int key) {
    if (key == KEY_RESIZE) return true;
    if (typing_) return handleInFilter(key);
    if (help_) {
        help_ = false;
        return key != 'q';
    }
    const auto page = static_cast<long>(std::max<size_t>(room(), 1));
    const auto all = static_cast<long>(ports_.size());
    for (const SortKey &each : kSortKeys)
        if (each.key == key) choice_.sort = each.sort;
    switch (key) {
        case 'q':
            return false;
        case 'r':
            choice_.reverse = !choice_.reverse;
            break;
        case 'a':
            choice_.idle = !choice_.idle;
            break;
        case '<':
            nextSort(-1);
            break;
        case '>':
            nextSort(1);
            break;
        case '/':
            typing_ = true;
            break;
        case kEscape:
            choice_.filter.clear();
            break;
        case ' ':
            paused_ = !paused_;
            sample_ = latest_;
            break;
        case 'h':
        case '?':
            help_ = true;
            break;
        case KEY_UP:
        case 'k':
            move(-1);
            break;
        case KEY_DOWN:
        case 'j':
            move(1);
            break;
        case KEY_PPAGE:
            move(-page);
            break;
        case KEY_NPAGE:
            move(page);
            break;
        case KEY_HOME:
            move(-all);
            break;
        case KEY_END:
            move(all);
            break;
        case kControlL:
            clearok(curscr, TRUE);
            break;
        default:
            break;
    }
    return true;
}

// The last cell of the screen stays empty: writing it would scroll some terminals.
void Screen::put(int row, const std::string &text, unsigned long attributes) const {
    if (row < 0 || row >= LINES || COLS < 1) return;
    const auto columns = static_cast<size_t>(row == LINES - 1 ? COLS - 1 : COLS);
    attrset(static_cast<int>(attributes));
    const std::string line = fitted(text, columns);
    mvaddnstr(row, 0, line.c_str(), static_cast<int>(line.size()));
    attrset(A_NORMAL);
}

std::string Screen::status() const {
    std::string text = fmt::format("qvs top  {}  by {}{}", sample_.time, nameOf(choice_.sort),
                                   choice_.reverse ? ", reversed" : "");
    if (!choice_.idle) text += ", with traffic";
    if (!choice_.filter.empty() || typing_)
        text += fmt::format(", with '{}{}'", choice_.filter, typing_ ? "_" : "");
    if (paused_) text += "  PAUSED";
    return text;
}

void Screen::draw() {
    erase();
    ports_ = chosenPorts(sample_, choice_);
    move(0);
    put(0, status(), A_BOLD);
    if (help_) {
        for (size_t i = 0; i < std::size(kHelp); i++)
            put(static_cast<int>(i) + 1, std::string(kHelp[i]));
    } else {
        const Lines lines =
            tableOf(ports_, first_, room(), static_cast<size_t>(std::max(COLS, 1)), choice_.sort);
        put(1, looked_ ? sumsOf(ports_) : "waiting for the host");
        put(2, lines.heading, A_REVERSE);
        for (size_t i = 0; i < lines.rows.size(); i++)
            put(kAbove + static_cast<int>(i), lines.rows[i]);
    }
    const std::string &gone = latest_.gone;
    if (!gone.empty()) {
        put(LINES - 1, fmt::format("the host is gone: {}", gone), A_REVERSE | A_BOLD);
    } else {
        put(LINES - 1, typing_
                           ? "type a text, Enter to keep it, Esc for none"
                           : "q quit  h help  t i o p P d n order  r reverse  / filter  a idle  space pause");
    }
    refresh();
}

}  // namespace qvs::top
