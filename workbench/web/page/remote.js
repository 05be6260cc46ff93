// The remote control, and the keyboard as a remote control.

import { fill, h } from "/dom.js";
import { icon } from "/icons.js";
import { isTaken } from "/keys.js";

const KEYS = {
  ArrowLeft: "left",
  ArrowRight: "right",
  ArrowUp: "up",
  ArrowDown: "down",
  Enter: "ok",
  Backspace: "back",
  Escape: "back",
  h: "home",
  p: "power",
};

export class Remote {
  /** `key` takes a key of the remote control; `act` carries out a command of the protocol. */
  constructor(node, store, key, act) {
    this.key_ = key;
    this.power_ = this.button_("power", "Power", () => key("power"));
    this.standby_ = this.button_("moon", "Standby", () => act("standby"));
    this.wake_ = this.button_("sun", "Wake", () => act("wake"));
    fill(
      node,
      h("h2", { class: "panel-title", id: "remote-title" }, "Remote"),
      h(
        "div",
        { class: "remote-body" },
        h("div", { class: "remote-row" }, this.power_, this.standby_, this.wake_),
        h(
          "div",
          { class: "pad" },
          this.arrow_("up", "Up"),
          this.arrow_("left", "Left"),
          h("button", { type: "button", class: "pad-ok", onclick: () => key("ok") }, "OK"),
          this.arrow_("right", "Right"),
          this.arrow_("down", "Down"),
        ),
        h(
          "div",
          { class: "remote-row" },
          this.button_("back", "Back", () => key("back")),
          this.button_("home", "Home", () => key("home")),
        ),
      ),
    );
    store.on("power", (power) => {
      this.power_.setAttribute("aria-pressed", String(power === "on"));
      this.standby_.disabled = power !== "on";
      this.wake_.disabled = power === "on";
    });
    document.addEventListener("keydown", (event) => this.onKeyDown_(event));
  }

  button_(picture, label, onclick) {
    return h("button", { type: "button", class: "remote-button", onclick }, icon(picture), h("span", {}, label));
  }

  arrow_(name, label) {
    return h(
      "button",
      { type: "button", class: `pad-arrow pad-${name}`, "aria-label": label, onclick: () => this.key_(name) },
      icon(name),
    );
  }

  onKeyDown_(event) {
    const name = KEYS[event.key.length === 1 ? event.key.toLowerCase() : event.key];
    const target = event.target;
    // A key that is held down moves on, but neither presses a button again nor switches off and on.
    const isHeld = event.repeat && !event.key.startsWith("Arrow");
    if (isHeld && event.key === "Enter" && target.matches("button")) {
      event.preventDefault();
    }
    if (!name || isHeld || isTaken(event)) {
      return;
    }
    event.preventDefault();
    // Whoever steers from a button elsewhere means the screen, also with the OK that follows.
    if (target.matches("button") && !target.closest("#tv, #remote")) {
      document.getElementById("tv").focus();
    }
    this.key_(name);
  }
}
