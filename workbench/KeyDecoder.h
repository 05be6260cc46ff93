// From bytes to keys: what a terminal sends for a key, and what a pipe holds. Pure; reading is
// Keyboard's affair.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// A key: the ASCII character on it, or one of these.
enum Key : int {
    KeyEnter = '\n',
    KeyEscape = 27,
    KeyOther = 0,  ///< a key that means nothing here: arrows, letters beyond ASCII, ...
    KeyEnd = -1    ///< there will be no more keys
};

class KeyDecoder {
public:
    /// The keys in what a terminal sent. An escape character at the very end may be a key of its own or
    /// begin the sequence of another one: it is kept back.
    std::vector<int> decode(std::string_view bytes);

    /// Whether an escape character is kept back.
    bool isWaiting() const { return !rest_.empty(); }

    /// Nothing came after it: what was kept back, as keys.
    std::vector<int> giveUpWaiting();

private:
    std::string rest_;  // an unfinished sequence, escape character first
};

/// The keys in what came through a pipe: its characters without white space.
std::vector<int> keysOfPipe(std::string_view bytes);

}  // namespace workbench
