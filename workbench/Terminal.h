// The terminal as a surface: a transcript that grows downwards and, on a real terminal, a live area of
// a few lines below it that is redrawn in place. The only file that knows control sequences. What is
// shown there is decided elsewhere.
#pragma once

#include <deque>
#include <string>
#include <vector>

namespace workbench {

/// How a piece of text stands out. Without colours all of them look alike.
enum class Style { Plain, Faint, Strong, Button, Good, Warning };

/// Printable text in one style.
struct Span {
    std::string text;
    Style style = Style::Plain;
};

/// A line of text, not wider than it is told to be: pieces side by side.
using Line = std::vector<Span>;

class Terminal {
public:
    /// Writes to the open file `output`. `live`: it is a terminal that may be redrawn, else lines are
    /// only ever added. Colours are used on terminals, unless NO_COLOR asks for none.
    Terminal(int output, bool live);
    /// Takes the live area away; the transcript stays.
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    bool isLive() const { return live_; }
    /// Size of the terminal now; 100 columns when it is none.
    int columns() const;
    int rows() const;

    /// Add a line to the transcript, above the live area.
    void print(const Line& line);

    /// Show these lines as the live area from now on, each cut to the width of the terminal.
    void setLive(const std::vector<Line>& lines);

    /// Draw everything anew: the terminal has another size, and what it made of the lines is unknown.
    void repaint();

    /// Whether nobody reads any more what is written.
    bool isBroken() const { return broken_; }

private:
    std::string rendered(const Line& line, int columns) const;
    std::string erasure() const;
    void write(const std::string& bytes);

    int output_;
    bool live_;
    bool colours_;
    bool broken_ = false;
    std::deque<Line> recent_;  // the end of the transcript
    std::string drawn_;        // the live area as it stands there
    int drawnRows_ = 0;
};

}  // namespace workbench
