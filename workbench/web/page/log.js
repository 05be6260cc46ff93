// The daemon's log: by priority, searchable, pausable.

import { h, plain } from "/dom.js";
import { FilterChips } from "/filter-chips.js";
import { StreamView } from "/stream-view.js";
import { timeText } from "/tv-time.js";

// The platform's numbers.
const PRIORITIES = { 3: "debug", 4: "info", 5: "warning" };

function priorityOf(line) {
  return PRIORITIES[line.priority] ?? String(line.priority);
}

function row(line) {
  const priority = priorityOf(line);
  return h(
    "div",
    { class: `row log-row ${priority}` },
    h("span", { class: "row-time" }, timeText(line.t, 1)),
    h("span", { class: "row-kind" }, priority),
    plain(line.message, { class: "row-text" }),
    plain(line.function, { class: "row-side" }),
  );
}

function detail(line) {
  return [
    h("p", { class: "detail-head" }, `${timeText(line.t, 3)} · ${priorityOf(line)} · `, plain(`${line.file}:${line.line} ${line.function}`)),
    h("pre", { class: "detail-text" }, plain(line.message)),
  ];
}

/** The log's panel. */
export function logView(store, act) {
  const filters = new FilterChips("Priorities", Object.values(PRIORITIES), () => view.update());
  const view = new StreamView({
    id: "log-list",
    label: "Log of the daemon",
    stream: store.log,
    textOf: (line) => `${line.message} ${line.function} ${line.file}`.toLowerCase(),
    accepts: (line) => filters.accepts(priorityOf(line)),
    makeRow: row,
    makeDetail: detail,
    filters: filters.node,
    clear: () => act("clearLog"),
  });
  return view;
}
