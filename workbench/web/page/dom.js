// Making elements. Text only ever becomes text nodes: nothing that a device, a file or the daemon
// says is read as markup.

const SVG = "http://www.w3.org/2000/svg";

function assign(node, properties) {
  for (const [name, value] of Object.entries(properties)) {
    if (value === undefined || value === null || value === false) {
      continue;
    }
    if (name.startsWith("on")) {
      node.addEventListener(name.slice(2), value);
    } else {
      node.setAttribute(name, value === true ? "" : String(value));
    }
  }
}

/**
 * Makes an HTML element. Properties are attributes, or listeners when their name begins with "on";
 * null, undefined and false leave an attribute out. Children are nodes or texts; null is no child.
 */
export function h(tag, properties = {}, ...children) {
  const node = document.createElement(tag);
  assign(node, properties);
  add(node, children);
  return node;
}

/** Makes an SVG element. */
export function svg(tag, properties = {}, ...children) {
  const node = document.createElementNS(SVG, tag);
  assign(node, properties);
  add(node, children);
  return node;
}

function add(node, children) {
  for (const child of children.flat(Infinity)) {
    if (child !== null && child !== undefined) {
      node.append(child);
    }
  }
}

/** Replaces all children; the same rules as for h(). */
export function fill(node, ...children) {
  node.replaceChildren();
  add(node, children);
}

/** Sets a text only when it differs, so that nothing is laid out again for nothing. */
export function setText(node, text) {
  if (node.textContent !== text) {
    node.textContent = text;
  }
}

/** A foreign text as a viewer sees it, isolated from the direction of what stands around it. */
export function foreign(text, properties = {}) {
  return h("bdi", properties, asShown(text));
}

/**
 * Display names carry one character reference (to U+202D, before a closing bracket) that whoever
 * shows them resolves; no other is known, so no other is touched.
 */
export function asShown(text) {
  return String(text ?? "").replaceAll("&#x202d;", "\u202d");
}

// Controls, zero-width characters and bidirectional marks: what a reader of a log must see.
const INVISIBLE =
  /[\u0000-\u001f\u007f-\u009f\u00ad\u061c\u200b-\u200f\u2028-\u202e\u2060-\u2069\ufeff\ufff9-\ufffb]/gu;

/** A text with its invisible characters written out, for those who look for faults: U+202E as ⟨202E⟩. */
export function written(text) {
  return String(text ?? "").replace(
    INVISIBLE,
    (sign) => `⟨${sign.codePointAt(0).toString(16).toUpperCase().padStart(4, "0")}⟩`,
  );
}

/** The same as an isolated element. */
export function plain(text, properties = {}) {
  return h("bdi", properties, written(text));
}

const changed = new Set();

/** Shows for a moment that something changed, from the next frame on. */
export function light(node) {
  if (changed.size === 0) {
    requestAnimationFrame(() => {
      for (const one of changed) {
        // Another name of the same animation begins it anew, and nothing has to be laid out for it.
        one.classList.toggle("again", one.classList.contains("lit") && !one.classList.contains("again"));
        one.classList.add("lit");
      }
      changed.clear();
    });
  }
  changed.add(node);
}
