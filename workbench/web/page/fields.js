// The small parts that forms are made of.

import { h } from "/dom.js";
import { icon } from "/icons.js";

/** A button with a picture and a word; `more` are further attributes. */
export function button(picture, text, onclick, more = {}) {
  return h("button", { type: "button", class: "button", onclick, ...more }, icon(picture), h("span", {}, text));
}

/** A button that is only a picture; the word is for those who listen or point. */
export function iconButton(picture, text, onclick, more = {}) {
  return h(
    "button",
    { type: "button", class: "icon-button", "aria-label": text, title: text, onclick, ...more },
    icon(picture),
  );
}

/** A labelled field; the control may be any form element. */
export function field(text, control, className = "field") {
  return h("label", { class: className }, h("span", { class: "field-name" }, text), control);
}

/** A switch: {node, set(on)}; `change` is called with what a person asks for. */
export function toggle(text, change, note = null) {
  const control = h("input", { type: "checkbox", role: "switch", onchange: () => change(control.checked) });
  const words = h("span", { class: "switch-text" }, text, note ? h("small", {}, note) : null);
  const node = h("label", { class: "switch" }, control, h("span", { class: "switch-track", "aria-hidden": "true" }), words);
  return {
    node,
    set(on) {
      control.checked = on;
    },
  };
}

/** A choice of one among few: {node, set(value)}; options are [value, text]. */
export function segments(label, options, change) {
  const buttons = options.map(([value, text]) =>
    h("button", { type: "button", "aria-pressed": "false", "data-value": value, onclick: () => change(value) }, text),
  );
  return {
    node: h("div", { class: "segments", role: "group", "aria-label": label }, buttons),
    set(value) {
      for (const one of buttons) {
        one.setAttribute("aria-pressed", String(one.dataset.value === String(value)));
      }
    },
  };
}

/** A whole number that a person typed; null when it is none. */
export function wholeNumber(text) {
  return /^\s*-?\d+\s*$/.test(text) ? Number(text) : null;
}
