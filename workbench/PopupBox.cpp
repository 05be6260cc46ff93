// A pop-up as a viewer sees it: frame, title, body, buttons, the time that is left.
#include "PopupBox.h"

#include <algorithm>

#include "Text.h"

namespace workbench {

namespace {

constexpr int mostColumns = 76;
constexpr int frameColumns = 4;  // "│ " and " │"
constexpr int barColumns = 10;
constexpr std::int64_t second = 1000;

std::string textOf(const std::optional<std::string>& text) {
    return printable(text.value_or(""));
}

/// "usb" for ".../noti_source_icon_usb.png": what the picture beside the title shows.
std::string pictureOf(const simulated::Popup& popup) {
    std::string name = textOf(popup.sourceIcon);
    name = name.substr(name.rfind('/') + 1);
    name = name.substr(0, name.rfind('.'));
    const std::string common = "noti_source_icon_";
    return name.compare(0, common.size(), common) == 0 ? name.substr(common.size()) : name;
}

class Box {
public:
    explicit Box(int columns) : inner_(std::min(columns, mostColumns) - frameColumns) {}

    int inner() const { return inner_; }

    void top(const std::string& label) {
        const std::string shown = label.empty() ? "" : " " + clipped(label, inner_ - 2) + " ";
        lines_.push_back({{"┌─" + shown + repeated("─", inner_ + 1 - columnsOf(shown)) + "┐"}});
    }

    /// A row of the box; what is left of its width is filled before the span number `stretch`.
    void row(Line line, std::size_t stretch = std::string::npos) {
        int used = 0;
        for (const Span& span : line) {
            used += columnsOf(span.text);
        }
        const auto gap = line.begin() + static_cast<std::ptrdiff_t>(std::min(stretch, line.size()));
        line.insert(gap, Span{repeated(" ", inner_ - used)});
        line.insert(line.begin(), Span{"│ "});
        line.push_back({" │"});
        lines_.push_back(line);
    }

    void paragraph(const std::string& text, Style style) {
        for (const std::string& line : wrapped(text, inner_)) {
            row({{line, style}});
        }
    }

    std::vector<Line> closed() {
        lines_.push_back({{"└" + repeated("─", inner_ + 2) + "┘"}});
        return lines_;
    }

private:
    int inner_;
    std::vector<Line> lines_;
};

/// "━━━━━━────  18 s", or how long it will stay.
Line timeLeft(const simulated::Popup& popup, std::optional<std::int64_t> left) {
    if (!left) {
        return {{"goes after " + std::to_string(popup.timeout) + " s", Style::Faint}};
    }
    const std::int64_t seconds = (std::max<std::int64_t>(*left, 0) + second - 1) / second;
    const std::int64_t whole = std::max(popup.timeout, 1);
    const int full = static_cast<int>((seconds * barColumns + whole - 1) / whole);
    const std::string number = std::to_string(seconds);
    return {{repeated("━", full)},
            {repeated("━", barColumns - full), Style::Faint},
            {repeated(" ", 4 - columnsOf(number)) + number + " s"}};
}

}  // namespace

std::vector<Line> popupBox(const simulated::Popup& popup,
                           int columns,
                           std::optional<std::int64_t> left) {
    Box box(columns);
    box.top(pictureOf(popup));
    box.paragraph(textOf(popup.title), Style::Strong);
    box.row({});
    box.paragraph(textOf(popup.body), Style::Plain);
    box.row({});
    Line last;
    for (int button = 0; button < popup.buttonCount; ++button) {
        const std::string key = std::to_string(button + 1);
        const std::string label = clipped(buttonLabel(popup, button), box.inner() / 3);
        last.push_back({"[" + key + " " + label + "]", Style::Button});
        last.push_back({"  "});
    }
    const std::size_t stretch = last.size();
    const Line time = timeLeft(popup, left);
    last.insert(last.end(), time.begin(), time.end());
    box.row(last, stretch);
    return box.closed();
}

std::int64_t popupEnd(const simulated::Popup& popup) {
    return popup.shownAt + popup.timeout * second;
}

std::string buttonLabel(const simulated::Popup& popup, int button) {
    if (button >= popup.buttonCount) {
        return {};
    }
    return textOf(button == 0 ? popup.firstButton : popup.secondButton);
}

}  // namespace workbench
