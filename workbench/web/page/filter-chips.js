// Chips that each let one kind of lines through, or keep it back.

import { h } from "/dom.js";

export class FilterChips {
  /** `changed` is called after a chip was pressed. At first everything goes through. */
  constructor(label, kinds, changed) {
    this.kinds_ = kinds;
    this.wanted_ = new Set(kinds);
    this.node = h(
      "span",
      { class: "filters", role: "group", "aria-label": label },
      kinds.map((kind) => this.chip_(kind, changed)),
    );
  }

  /** Whether lines of this kind are wanted; a kind that has no chip is never hidden. */
  accepts(kind) {
    return this.wanted_.has(kind) || !this.kinds_.includes(kind);
  }

  chip_(kind, changed) {
    const chip = h("button", { type: "button", class: "chip", "aria-pressed": "true" }, kind);
    chip.addEventListener("click", () => {
      const isWanted = !this.wanted_.delete(kind);
      if (isWanted) {
        this.wanted_.add(kind);
      }
      chip.setAttribute("aria-pressed", String(isWanted));
      changed();
    });
    return chip;
  }
}
