// The lines that show how things stand now, from top to bottom.
#include "StatusArea.h"

#include "PopupBox.h"
#include "Text.h"
#include "Transcript.h"
#include "TvFacts.h"

namespace workbench {

namespace {

/// Rows that are left to the transcript in any case.
constexpr int fewestRows = 6;
/// Rows of everything but the pop-up.
constexpr int otherRows = 4;

/// The pop-up as a box, or on one line where a box would fill the terminal.
std::vector<Line> popupLines(const simulated::Popup& popup,
                             std::int64_t now,
                             int columns,
                             int rows) {
    std::vector<Line> box = popupBox(popup, columns, popupEnd(popup) - now);
    if (static_cast<int>(box.size()) + otherRows + fewestRows <= rows) {
        return box;
    }
    Line line{{printable(popup.title.value_or("")) + " ", Style::Strong}};
    for (int button = 0; button < popup.buttonCount; ++button) {
        line.push_back({" "});
        line.push_back({"[" + std::to_string(button + 1) + " " + buttonLabel(popup, button) + "]",
                        Style::Button});
    }
    return {line};
}

Line tvLine(simulated::SimulatedTv& tv) {
    const std::string front = tv.applications().foreground();
    Line line{{" TV    ", Style::Faint}, {clockText(tv.clock().now()) + "  "}};
    if (tv.power().inStandby()) {
        line.push_back({"in standby", Style::Warning});
    } else if (front.empty()) {
        line.push_back({"on"});
    } else {
        line.push_back({"on, " + applicationName(front) + " in front"});
    }
    const auto add = [&line](bool holds, const std::string& text) {
        if (holds) {
            line.push_back({" · ", Style::Faint});
            line.push_back({text});
        }
    };
    add(true, languageNameOf(tv));
    add(isInShopMode(tv), "shop mode");
    add(tv.applications().isRunning(companionId) && front != companionId, "companion running");
    add((tv.small().contextState & distractionFreeBit) != 0, "undisturbed");
    add(tv.clock().rate() > 1, "time ×" + std::to_string(static_cast<int>(tv.clock().rate())));
    return line;
}

Line usbLine(const Shelf& shelf) {
    Line line{{" USB ", Style::Faint}};
    for (std::size_t i = 0; i < shelf.things().size(); ++i) {
        const Shelf::Thing& thing = shelf.things()[i];
        line.push_back({i == shelf.hand() ? "▸ " : "  "});
        line.push_back(
            {thing.isPlugged ? "● " : "○ ", thing.isPlugged ? Style::Good : Style::Faint});
        line.push_back({printable(thing.name), thing.isPlugged ? Style::Plain : Style::Faint});
        line.push_back({"  "});
    }
    return line;
}

Line keyLine(simulated::SimulatedTv& tv, const Shelf& shelf, int columns) {
    struct KeyHint {
        const char* key;
        std::string does;
    };
    std::vector<KeyHint> hints;
    if (const simulated::Popup* const popup = tv.screen().popup()) {
        for (int button = 0; button < popup->buttonCount; ++button) {
            hints.push_back({button == 0 ? "1" : "2", buttonLabel(*popup, button)});
        }
        hints.push_back({"b", "hide"});
    }
    if (!tv.applications().foreground().empty()) {
        hints.push_back({"h", "home"});
    }
    if (!shelf.isEmpty()) {
        hints.push_back(shelf.inHand().isPlugged ? KeyHint{"p", "pull"} : KeyHint{"r", "plug in"});
    }
    hints.push_back(tv.power().inStandby() ? KeyHint{"w", "wake"} : KeyHint{"s", "standby"});
    hints.push_back({"l", "language"});
    hints.push_back({"t", "skip time"});

    const std::vector<KeyHint> always = {{"?", "all keys"}, {"q", "quit"}};
    const auto columnsFor = [](const KeyHint& hint) {
        return columnsOf(hint.key) + 1 + columnsOf(hint.does) + 3;
    };
    int left = columns - 7;
    for (const KeyHint& hint : always) {
        left -= columnsFor(hint);
    }
    Line line{{" Keys  ", Style::Faint}};
    const auto add = [&line](const KeyHint& hint) {
        line.push_back({hint.key, Style::Strong});
        line.push_back({" " + hint.does + "   ", Style::Faint});
    };
    for (const KeyHint& hint : hints) {
        left -= columnsFor(hint);
        if (left >= 0) {
            add(hint);
        }
    }
    for (const KeyHint& hint : always) {
        add(hint);
    }
    return line;
}

}  // namespace

std::vector<Line> statusArea(simulated::SimulatedTv& tv,
                             const Shelf& shelf,
                             int columns,
                             int rows) {
    std::vector<Line> lines{{{repeated("─", columns), Style::Faint}}};
    if (const simulated::Popup* const popup = tv.screen().popup()) {
        for (Line line : popupLines(*popup, tv.clock().now(), columns - 2, rows)) {
            line.insert(line.begin(), Span{" "});
            lines.push_back(line);
        }
    }
    lines.push_back(tvLine(tv));
    lines.push_back(usbLine(shelf));
    lines.push_back(keyLine(tv, shelf, columns));
    return lines;
}

}  // namespace workbench
