// Who a key belongs to: the control that has the focus, or the page.

// Where everything that is typed is meant for the control.
const TYPED_INTO = "input:not([type=checkbox]), select, textarea, dialog, dialog *";

// What a control uses itself; the rest is the page's.
const OWN = [
  ["button, summary, a", ["Enter", " "]],
  ["input[type=checkbox]", [" "]],
  ["[role=tab]", ["ArrowLeft", "ArrowRight", "Home", "End"]],
  ["[role=listbox]", ["ArrowUp", "ArrowDown", "PageUp", "PageDown", "Home", "End"]],
  [".launched-body, .replay, .gdbus", ["ArrowUp", "ArrowDown"]],
];

/** Whether a pressed key is for a control, the browser or the system, and not for the page. */
export function isTaken({ key, target, ctrlKey, altKey, metaKey, defaultPrevented }) {
  return (
    ctrlKey ||
    altKey ||
    metaKey ||
    defaultPrevented ||
    target.matches(TYPED_INTO) ||
    OWN.some(([controls, keys]) => target.matches(controls) && keys.includes(key))
  );
}
