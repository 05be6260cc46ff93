// A stream on show: a virtual list with a search, a pause, a count and a detail below. The log and
// the wire are two of these.

import { fill, h, setText } from "/dom.js";
import { iconButton } from "/fields.js";
import { VirtualList } from "/virtual-list.js";

const ROW_HEIGHT = 22;

export class StreamView {
  /**
   * `textOf` tells what of an item is searched, in lower case; `accepts` whether it is wanted;
   * `makeRow` and `makeDetail` show it; `filters` are nodes for the bar above; `clear` empties the
   * stream.
   */
  constructor({ id, label, stream, textOf, accepts, makeRow, makeDetail, filters, clear }) {
    this.stream_ = stream;
    this.textOf_ = textOf;
    this.accepts_ = accepts;
    this.paused_ = null;
    this.detail_ = h("div", { class: "detail", hidden: true });
    this.list_ = new VirtualList({
      label,
      rowHeight: ROW_HEIGHT,
      makeRow,
      select: (item) => {
        this.detail_.hidden = item === null;
        fill(this.detail_, item ? makeDetail(item) : null);
      },
    });
    this.list_.node.id = id;
    this.search_ = h("input", {
      type: "search",
      placeholder: "Search",
      "aria-label": `Search: ${label}`,
      spellcheck: "false",
      oninput: () => this.update(),
    });
    this.count_ = h("span", { class: "stream-count", role: "status" }, "0");
    this.pause_ = iconButton("pause", "Pause", () => this.togglePause_(), { "aria-pressed": "false" });
    this.node = h(
      "div",
      { class: "stream" },
      h(
        "div",
        { class: "stream-bar" },
        this.search_,
        filters,
        this.count_,
        this.pause_,
        iconButton("down", "To the end", () => this.list_.toEnd()),
        iconButton("trash", "Clear", () => {
          this.paused_ = this.paused_ && [];
          clear();
        }),
      ),
      this.list_.node,
      this.detail_,
    );
    stream.subscribe(() => this.update());
  }

  focusSearch() {
    this.search_.focus();
    this.search_.select();
  }

  /** Filters anew and draws. */
  update() {
    const sought = this.search_.value.trim().toLowerCase();
    const source = this.paused_ ?? this.stream_.items;
    const items = source.filter(
      (item) => this.accepts_(item) && (sought === "" || this.textOf_(item).includes(sought)),
    );
    this.list_.show(items);
    const waiting = this.paused_ ? this.newer_() : 0;
    const all = source.length;
    const shown = items.length === all ? `${all}` : `${items.length} of ${all}`;
    setText(this.count_, waiting > 0 ? `${shown} · ${waiting} newer` : shown);
  }

  newer_() {
    const last = this.paused_.at(-1)?.n ?? -1;
    const items = this.stream_.items;
    let count = 0;
    while (count < items.length && items[items.length - 1 - count].n > last) {
      count += 1;
    }
    return count;
  }

  togglePause_() {
    this.paused_ = this.paused_ ? null : this.stream_.items.slice();
    this.pause_.setAttribute("aria-pressed", String(this.paused_ !== null));
    this.pause_.setAttribute("aria-label", this.paused_ ? "Go on" : "Pause");
    this.update();
  }
}
