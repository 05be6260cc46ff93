// The bus: every call, reply, error and signal, with its arguments as folded JSON.

import { h, plain } from "/dom.js";
import { FilterChips } from "/filter-chips.js";
import { icon } from "/icons.js";
import { brief, parsed, tree } from "/json-view.js";
import { StreamView } from "/stream-view.js";
import { timeText } from "/tv-time.js";

const KINDS = {
  call: ["out", "call"],
  reply: ["in", "reply"],
  error: ["close", "error"],
  signal: ["signal", "signal"],
};

// What an "Action" of a device means.
const ACTIONS = { 1: "there", 2: "removed", 3: "there, last of a list", 4: "no device" };

/** One argument in a few words: of a device, what happened to it and where it is. */
function argumentText(argument) {
  const value = parsed(argument);
  if (value && typeof value === "object" && "Action" in value) {
    return [ACTIONS[value.Action] ?? `Action ${value.Action}`, value.DeviceName, value.DisplayName]
      .filter(Boolean)
      .join(" · ");
  }
  return brief(value);
}

function summary(message) {
  return (message.args ?? []).map(argumentText).join(", ");
}

/** Whom a message concerns, by client number where one is known. */
function partner(message) {
  if (message.client !== null && message.client !== undefined) {
    return `client ${message.client}`;
  }
  return (message.kind === "call" ? message.from : message.to) ?? "";
}

function row(message) {
  const [picture, name] = KINDS[message.kind] ?? ["app", message.kind];
  return h(
    "div",
    { class: `row wire-row ${message.kind}` },
    h("span", { class: "row-time" }, timeText(message.t, 1)),
    h("span", { class: "row-kind" }, icon(picture), name),
    plain(message.member, { class: "row-member" }),
    plain(summary(message), { class: "row-text" }),
    plain(partner(message), { class: "row-side" }),
  );
}

function detail(message) {
  const values = (message.args ?? []).map(parsed);
  return [
    h(
      "p",
      { class: "detail-head" },
      `${timeText(message.t, 3)} · ${message.kind} · `,
      plain(`${message.from ?? "?"} → ${message.to ?? "?"}`),
      message.signature ? ` · ${message.signature}` : null,
    ),
    message.error ? h("p", { class: "bad" }, plain(message.error)) : null,
    values.length === 0
      ? h("p", { class: "none" }, "No arguments.")
      : values.map((value, index) => tree(value, values.length > 1 ? String(index) : null)),
  ];
}

/** The wire's panel. */
export function wireView(store) {
  const filters = new FilterChips("Kinds of messages", Object.keys(KINDS), () => view.update());
  const view = new StreamView({
    id: "wire-list",
    label: "Messages on the bus",
    stream: store.wire,
    textOf: (message) => `${message.member} ${message.from} ${message.to} ${JSON.stringify(message.args)}`.toLowerCase(),
    accepts: (message) => filters.accepts(message.kind),
    makeRow: row,
    makeDetail: detail,
    filters: filters.node,
    clear: () => store.wire.clear(),
  });
  return view;
}
