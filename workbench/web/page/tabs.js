// Panels behind tabs, by the usual keys: arrows, Home and End move among the tabs.

import { fill, h } from "/dom.js";
import { iconButton } from "/fields.js";

let numbers = 0;

export class Tabs {
  /**
   * Fills `node` with tabs of {id, title, node, shown?}; `shown` is called when a panel comes to
   * view. `grow` is called when a person wants the dock larger, or as it was.
   */
  constructor(node, label, panels, grow) {
    this.panels_ = panels;
    this.prefix_ = `tabs-${(numbers += 1)}`;
    this.tabs_ = panels.map((panel) => this.tab_(panel));
    const list = h("div", { class: "tabs", role: "tablist", "aria-label": label }, this.tabs_);
    list.addEventListener("keydown", (event) => this.onKeyDown_(event));
    fill(
      node,
      h("div", { class: "dock-head" }, list, iconButton("grow", `Enlarge: ${label}`, grow, { class: "icon-button grow" })),
      panels.map((panel) => this.panel_(panel)),
    );
    this.choose(panels[0].id);
  }

  choose(id) {
    this.panels_.forEach((panel, index) => {
      const isChosen = panel.id === id;
      this.tabs_[index].setAttribute("aria-selected", String(isChosen));
      this.tabs_[index].tabIndex = isChosen ? 0 : -1;
      panel.holder.hidden = !isChosen;
      if (isChosen) {
        panel.shown?.();
      }
    });
  }

  tab_(panel) {
    return h(
      "button",
      {
        type: "button",
        role: "tab",
        id: `${this.prefix_}-${panel.id}`,
        "aria-controls": `panel-${panel.id}`,
        onclick: () => this.choose(panel.id),
      },
      panel.title,
      panel.badge ?? null,
    );
  }

  panel_(panel) {
    panel.holder = h(
      "div",
      { class: "tab-panel", role: "tabpanel", id: `panel-${panel.id}`, "aria-labelledby": `${this.prefix_}-${panel.id}` },
      panel.node,
    );
    return panel.holder;
  }

  onKeyDown_(event) {
    const now = this.tabs_.indexOf(document.activeElement);
    const last = this.tabs_.length - 1;
    const next = { ArrowLeft: now === 0 ? last : now - 1, ArrowRight: now === last ? 0 : now + 1, Home: 0, End: last }[
      event.key
    ];
    if (next !== undefined) {
      event.preventDefault();
      this.choose(this.panels_[next].id);
      this.tabs_[next].focus();
    }
  }
}
