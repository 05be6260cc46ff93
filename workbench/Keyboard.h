// The keys of the person, or of a script: read from standard input, which is a terminal or not. What a
// key does is decided elsewhere.
#pragma once

#include <functional>
#include <optional>

#include <termios.h>

#include "KeyDecoder.h"
#include "Loop.h"

namespace workbench {

class Keyboard {
public:
    /// Reads the open file `input` from now on and hands every key to `function`, KeyEnd the last. A
    /// terminal gives single keys unechoed, until this object goes.
    Keyboard(int input, std::function<void(int key)> function);
    ~Keyboard();
    Keyboard(const Keyboard&) = delete;
    Keyboard& operator=(const Keyboard&) = delete;

    /// Whether it is a terminal, where a person sits.
    bool isTerminal() const { return formerSettings_.has_value(); }

private:
    bool read();
    void hand(const std::vector<int>& keys) const;

    int input_;
    std::function<void(int)> function_;
    std::optional<termios> formerSettings_;
    KeyDecoder decoder_;
    Source readable_;
    Source waiting_;
};

}  // namespace workbench
