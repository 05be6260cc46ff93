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

// What the bus and the settings take as a number.
const LEAST_INT = -(2 ** 31);
const MOST_INT = 2 ** 31 - 1;

/** A field holds what cannot be sent; the message says what it may hold. */
export class WrongField extends Error {
  constructor(input, message) {
    super(message);
    this.input = input;
  }
}

/** The whole number that stands in a field, from `least` to `most`; throws WrongField for anything else. */
export function wholeNumber(input, name, least = LEAST_INT, most = MOST_INT) {
  const text = input.value.trim();
  const number = /^[-+]?\d+$/.test(text) ? Number(text) : NaN;
  if (number >= least && number <= most) {
    return number;
  }
  throw new WrongField(input, `${name}: a whole number from ${least} to ${most}`);
}

let notices = 0;

/**
 * Has `send` called when a form is sent. It reads the fields; when it throws a WrongField, that field
 * is marked, gets the focus, and the notice says why. Returns the notice, to be put into the form.
 */
export function onSend(form, send) {
  const notice = h("p", { class: "notice bad", role: "alert", id: `notice-${(notices += 1)}` });
  let wrong = null;
  const clear = () => {
    notice.textContent = "";
    wrong?.removeAttribute("aria-invalid");
    wrong?.removeAttribute("aria-describedby");
    wrong = null;
  };
  // The browser's own checks let numbers through that are none for the program.
  form.noValidate = true;
  form.addEventListener("input", clear);
  form.addEventListener("change", clear);
  form.addEventListener("submit", (event) => {
    event.preventDefault();
    clear();
    try {
      send();
    } catch (error) {
      if (!(error instanceof WrongField)) {
        throw error;
      }
      wrong = error.input;
      wrong.setAttribute("aria-invalid", "true");
      wrong.setAttribute("aria-describedby", notice.id);
      notice.textContent = error.message;
      wrong.focus();
    }
  });
  return notice;
}
