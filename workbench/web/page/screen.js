// The television's screen: its programme, a pop-up over it, the application in front, or darkness.

import { fill, h, setText } from "/dom.js";
import { HINTED, hintFor } from "/hints.js";
import { icon } from "/icons.js";
import { launchedView } from "/launched.js";
import { Popup } from "/popup.js";

const TICK = 200;

const POWER_TEXTS = { standby: "Standby", off: "Switched off" };

export class Screen {
  /** `act` carries out a command of the protocol. */
  constructor(node, store, time, act) {
    this.store_ = store;
    this.time_ = time;
    this.act_ = act;
    this.popup_ = null;
    this.ticking_ = 0;
    this.back_ = h("div", { class: "tv-layer tv-programme" });
    this.front_ = h("div", { class: "tv-layer tv-application" });
    this.over_ = h("div", { class: "tv-layer tv-popups", "aria-live": "assertive" });
    this.dark_ = h("div", { class: "tv-layer tv-dark", hidden: true });
    this.led_ = h("span", { class: "tv-led", "aria-hidden": "true" });
    this.hint_ = h("p", { class: "tv-hint" });
    fill(
      node,
      h("div", { class: "tv-glass" }, this.back_, this.front_, this.hint_, this.over_, this.dark_),
      h("div", { class: "tv-edge", "aria-hidden": "true" }, h("span", {}, "portmeld"), this.led_),
    );
    store.on("popup", (popup) => this.showPopup_(popup));
    store.on("launched", (launched) => this.showLaunched_(launched));
    store.on("power", (power) => this.showPower_(power));
    HINTED.forEach((member) => store.on(member, () => setText(this.hint_, hintFor(store.state))));
  }

  /** A key of the remote control. */
  key(name) {
    this.act_("key", { name: this.meant_(name) });
  }

  /** The television counts buttons in reading order; on a screen from right to left, left is next. */
  meant_(name) {
    const mirrored = { left: "right", right: "left" };
    return this.store_.state.popup?.rtl ? mirrored[name] ?? name : name;
  }

  showPopup_(popup) {
    if (popup && popup.number === this.popup_?.number) {
      this.popup_.choose(popup.focus);
      return;
    }
    const hadFocus = this.over_.contains(document.activeElement);
    clearInterval(this.ticking_);
    this.popup_ = null;
    this.over_.replaceChildren();
    if (popup) {
      const due = this.time_.now() + popup.leftMs;
      this.popup_ = new Popup(popup, due, (button) => this.act_("press", { button }));
      this.over_.append(this.popup_.node);
      this.popup_.tick(this.time_.now());
      this.ticking_ = setInterval(() => this.popup_.tick(this.time_.now()), TICK);
    }
    if (hadFocus) {
      document.getElementById("tv").focus();
    }
  }

  showLaunched_(launched) {
    fill(this.front_, launched ? launchedView(launched) : null);
  }

  showPower_(power) {
    this.dark_.hidden = power === "on";
    this.led_.dataset.power = power;
    fill(
      this.dark_,
      power === "on" ? null : h("p", {}, icon(power === "off" ? "power" : "moon"), POWER_TEXTS[power] ?? power),
    );
  }
}
