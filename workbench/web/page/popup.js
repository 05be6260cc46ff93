// A pop-up on the screen: icon, title, body, buttons, and the time that it still has. Which
// button the remote control has chosen is the television's to know, so that all pages agree.

import { asShown, foreign, h, setText } from "/dom.js";

/** A picture that the daemon names, by way of the program; a missing one leaves its place empty. */
function picture(path, className) {
  const image = h("img", { class: className, alt: "", src: `/icon?path=${encodeURIComponent(path)}` });
  image.addEventListener("error", () => image.classList.add("missing"));
  return image;
}

export class Popup {
  /** `press` is called with a button's number; the pop-up goes at the time `due`. */
  constructor(popup, due, press) {
    this.number = popup.number;
    this.due_ = due;
    this.whole_ = popup.timeoutMs;
    this.press_ = press;
    this.buttons_ = popup.buttons.map((button, number) => this.button_(button, number));
    this.bar_ = h("span", { class: "popup-bar" });
    this.seconds_ = h("span", { class: "popup-seconds", dir: "ltr" });
    this.node = this.draw_(popup);
    this.choose(popup.focus);
  }

  draw_(popup) {
    const isNotice = popup.buttons.length === 0;
    return h(
      "div",
      {
        class: isNotice ? "popup notice" : "popup",
        role: isNotice ? "status" : "alertdialog",
        dir: popup.rtl ? "rtl" : "ltr",
        lang: popup.language?.replace(/[_@]/, "-"),
        "aria-labelledby": "popup-title",
        "aria-describedby": "popup-body",
        "data-kind": popup.kind,
      },
      popup.sourceIcon ? picture(popup.sourceIcon, "popup-source") : h("span", { class: "popup-source" }),
      h(
        "div",
        { class: "popup-text" },
        h("h2", { id: "popup-title", class: "popup-title" }, foreign(popup.title)),
        h("p", { id: "popup-body", class: "popup-body" }, foreign(popup.body)),
      ),
      h(
        "div",
        { class: "popup-foot" },
        this.buttons_,
        h("span", { class: "popup-left", role: "timer", "aria-label": "Time left" }, this.seconds_),
      ),
      h("span", { class: "popup-track", "aria-hidden": "true" }, this.bar_),
    );
  }

  button_(button, number) {
    return h(
      "button",
      {
        type: "button",
        class: "popup-button",
        onclick: () => this.press_(number),
      },
      button.icon ? picture(button.icon, "popup-icon") : null,
      h("bdi", {}, asShown(button.label)),
    );
  }

  /** Marks the button that OK presses; the focus goes with it when it is in the pop-up. */
  choose(number) {
    this.buttons_.forEach((button, index) => button.classList.toggle("chosen", index === number));
    if (this.node.contains(document.activeElement)) {
      this.buttons_[number]?.focus();
    }
  }

  /** Shows the time that is left now. */
  tick(now) {
    const left = Math.max(this.due_ - now, 0);
    const share = this.whole_ > 0 ? Math.min(left / this.whole_, 1) : 0;
    this.bar_.style.transform = `scaleX(${share.toFixed(4)})`;
    setText(this.seconds_, `${Math.ceil(left / 1000)} s`);
  }
}
