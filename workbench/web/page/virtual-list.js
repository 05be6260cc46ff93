// A list of any length of which only the rows in view are in the document. All rows are equally
// high; the end is followed until somebody scrolls away from it. One row can be selected.

import { h } from "/dom.js";

// Rows beyond the edges, so that scrolling shows no gaps.
const SPARE = 6;

export class VirtualList {
  /**
   * `makeRow` returns the element of an item; `select` is called with the selected item, or null.
   * Rows are `rowHeight` pixels high.
   */
  constructor({ label, rowHeight, makeRow, select }) {
    this.rowHeight_ = rowHeight;
    this.makeRow_ = makeRow;
    this.select_ = select;
    this.items_ = [];
    this.rows_ = new Map();
    this.selected_ = null;
    this.follows_ = true;
    this.space_ = h("div", { class: "list-space", role: "presentation" });
    this.node = h(
      "div",
      { class: "list", role: "listbox", tabindex: "0", "aria-label": label, onscroll: () => this.onScroll_() },
      this.space_,
    );
    this.node.addEventListener("keydown", (event) => this.onKeyDown_(event));
    new ResizeObserver(() => this.draw()).observe(this.node);
  }

  /** Shows these items, which have distinct numbers "n" in rising order; the array is not changed. */
  show(items) {
    this.items_ = items;
    if (this.selected_ && !items.includes(this.selected_)) {
      this.choose_(null);
    }
    this.draw();
  }

  /** Draws what is in view, and nothing while the list is hidden. */
  draw() {
    const height = this.node.clientHeight;
    if (height === 0) {
      return;
    }
    this.space_.style.height = `${this.items_.length * this.rowHeight_}px`;
    if (this.follows_) {
      this.node.scrollTop = this.items_.length * this.rowHeight_;
    }
    const first = Math.max(Math.floor(this.node.scrollTop / this.rowHeight_) - SPARE, 0);
    const last = Math.min(first + Math.ceil(height / this.rowHeight_) + 2 * SPARE, this.items_.length);
    const wanted = new Set();
    for (let index = first; index < last; index += 1) {
      wanted.add(this.items_[index].n);
      this.place_(this.items_[index], index);
    }
    for (const [number, row] of this.rows_) {
      if (!wanted.has(number)) {
        row.remove();
        this.rows_.delete(number);
      }
    }
  }

  toEnd() {
    this.follows_ = true;
    this.draw();
  }

  place_(item, index) {
    let row = this.rows_.get(item.n);
    if (!row) {
      row = this.makeRow_(item);
      row.setAttribute("role", "option");
      row.id = `${this.node.id || "row"}-${item.n}`;
      row.addEventListener("click", () => this.choose_(item === this.selected_ ? null : item));
      this.rows_.set(item.n, row);
      this.space_.append(row);
    }
    row.style.transform = `translateY(${index * this.rowHeight_}px)`;
    row.setAttribute("aria-setsize", String(this.items_.length));
    row.setAttribute("aria-posinset", String(index + 1));
    row.setAttribute("aria-selected", String(item === this.selected_));
  }

  choose_(item) {
    this.selected_ = item;
    this.follows_ = this.follows_ && item === null;
    if (item) {
      this.node.setAttribute("aria-activedescendant", `${this.node.id || "row"}-${item.n}`);
    } else {
      this.node.removeAttribute("aria-activedescendant");
    }
    this.select_(item);
    // What shows the item may take room from the list.
    if (item) {
      this.reveal_(this.items_.indexOf(item));
    }
    this.draw();
  }

  onScroll_() {
    const end = this.items_.length * this.rowHeight_ - this.node.clientHeight;
    this.follows_ = this.selected_ === null && this.node.scrollTop >= end - this.rowHeight_;
    this.draw();
  }

  onKeyDown_(event) {
    const page = Math.max(Math.floor(this.node.clientHeight / this.rowHeight_) - 1, 1);
    const last = this.items_.length - 1;
    const now = this.selected_ ? this.items_.indexOf(this.selected_) : last + 1;
    const next = { ArrowUp: now - 1, ArrowDown: now + 1, PageUp: now - page, PageDown: now + page, Home: 0, End: last }[
      event.key
    ];
    if (event.key === "Escape" && this.selected_) {
      event.preventDefault();
      event.stopPropagation();
      this.choose_(null);
      this.toEnd();
    } else if (next !== undefined && last >= 0) {
      event.preventDefault();
      const index = Math.min(Math.max(next, 0), last);
      this.choose_(this.items_[index]);
    }
  }

  reveal_(index) {
    const top = index * this.rowHeight_;
    if (top < this.node.scrollTop) {
      this.node.scrollTop = top;
    } else if (top + this.rowHeight_ > this.node.scrollTop + this.node.clientHeight) {
      this.node.scrollTop = top + this.rowHeight_ - this.node.clientHeight;
    }
  }
}
