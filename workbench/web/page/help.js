// The keys, on one card.

import { h } from "/dom.js";
import { iconButton } from "/fields.js";

const KEYS = [
  ["← → ↑ ↓", "move on the screen"],
  ["Enter", "OK: press the chosen button"],
  ["Esc or Backspace", "back: hide the pop-up"],
  ["H", "home: leave the application"],
  ["P", "power on or off"],
  ["T", "to the screen, from anywhere"],
  ["1 to 9", "plug the first, second, … sample in"],
  ["N", "step to the next timer"],
  ["/", "search the log"],
  ["?", "this card"],
];

/** The card as a dialog; show it with showModal(). */
export function helpDialog() {
  const node = h(
    "dialog",
    { class: "help", "aria-labelledby": "help-title" },
    h("header", {}, h("h2", { id: "help-title" }, "Keys"), iconButton("close", "Close", () => node.close())),
    h("dl", {}, KEYS.map(([key, text]) => h("div", {}, h("dt", {}, h("kbd", {}, key)), h("dd", {}, text)))),
    h("p", {}, "A field takes all that is typed into it. Whatever else has the focus takes only what it uses itself: a button or a tab Enter and Space, a list or a row of tabs the arrows. T brings the focus back to the screen. Tab reaches everything else."),
  );
  return node;
}
