// JSON as a tree that folds, with every invisible character written out.

import { h, plain } from "/dom.js";

// Levels below this one start folded.
const OPEN_LEVELS = 2;
// A hostile text can hold any number of members or levels.
const MOST_MEMBERS = 500;
const MOST_LEVELS = 60;

function leaf(value) {
  if (typeof value === "string") {
    return h("span", { class: "json-string" }, '"', plain(value), '"');
  }
  return h("span", { class: `json-${value === null ? "null" : typeof value}` }, String(value));
}

/** Parses a text that looks like a JSON object or array; anything else stays what it is. */
export function parsed(value) {
  if (typeof value === "string" && /^\s*[[{]/.test(value)) {
    try {
      return JSON.parse(value);
    } catch {
      return value;
    }
  }
  return value;
}

/** A value in one line. */
export function brief(value) {
  const whole = parsed(value);
  if (whole === null || typeof whole !== "object") {
    return JSON.stringify(whole) ?? "";
  }
  return Array.isArray(whole) ? `[${whole.length}]` : `{ ${Object.keys(whole).length} members }`;
}

/** A value as a tree; `name` stands before it. */
export function tree(value, name = null, level = 0) {
  const label = name === null ? null : h("span", { class: "json-name" }, plain(name), ": ");
  if (value === null || typeof value !== "object" || level > MOST_LEVELS) {
    return h("div", { class: "json-line" }, label, leaf(typeof value === "object" && value ? "…" : value));
  }
  const members = Object.entries(value);
  const rows = members
    .slice(0, MOST_MEMBERS)
    .map(([key, inner]) => tree(inner, Array.isArray(value) ? `${key}` : key, level + 1));
  if (members.length > MOST_MEMBERS) {
    rows.push(h("div", { class: "json-line none" }, `… ${members.length - MOST_MEMBERS} more`));
  }
  return h(
    "details",
    { class: "json", open: level < OPEN_LEVELS },
    h("summary", {}, label, h("span", { class: "json-brief" }, brief(value))),
    h("div", { class: "json-members" }, rows),
  );
}
