// The television's clock in the bar at the top, and the list of what waits for it.

import { fill, h, plain, setText } from "/dom.js";
import { button, segments } from "/fields.js";
import { timeText } from "/tv-time.js";

const TICK = 200;
const FACTORS = [10, 30];

export class ClockView {
  constructor(store, time, act, step) {
    this.store_ = store;
    this.time_ = time;
    this.text_ = h("span", { class: "clock-text", role: "timer", "aria-label": "Time of the television" }, "0:00");
    this.modes_ = segments(
      "Clock",
      [["stopped", "Stop"], ["real", "Real"], ...FACTORS.map((factor) => [`fast-${factor}`, `${factor}×`])],
      (choice) => {
        const [mode, factor] = choice.split("-");
        act("clock", { mode, ...(factor ? { factor: Number(factor) } : {}) });
      },
    );
    this.step_ = button("step", "Next timer", step);
    this.bar = h("div", { class: "clock" }, this.text_, this.modes_.node, this.step_);
    this.rows_ = h("tbody");
    this.node = h(
      "div",
      { class: "timers" },
      h(
        "table",
        {},
        h("thead", {}, h("tr", {}, h("th", { scope: "col" }, "due in"), h("th", { scope: "col" }, "at"), h("th", { scope: "col" }, "what for"))),
        this.rows_,
      ),
    );
    store.on("clock", (clock) => this.show_(clock));
    setInterval(() => this.tick_(), TICK);
  }

  show_(clock) {
    this.modes_.set(clock.mode === "fast" ? `fast-${clock.factor}` : clock.mode);
    this.step_.disabled = clock.timers.every((timer) => timer.everyMs !== null);
    this.timers_ = clock.timers.map((timer) => ({
      due: clock.now + timer.inMs,
      left: h("td", { class: "number" }),
      what: timer.everyMs ? `${timer.what}, every ${timer.everyMs / 1000} s` : timer.what,
    }));
    fill(
      this.rows_,
      this.timers_.map((timer) => h("tr", {}, timer.left, h("td", { class: "number" }, timeText(timer.due)), h("td", {}, plain(timer.what)))),
      this.timers_.length === 0 ? h("tr", {}, h("td", { colspan: "3", class: "none" }, "No timer is armed.")) : null,
    );
    this.tick_();
  }

  tick_() {
    const now = this.time_.now();
    setText(this.text_, timeText(now));
    for (const timer of this.timers_ ?? []) {
      setText(timer.left, `${Math.max(timer.due - now, 0) < 100 ? "0" : (Math.max(timer.due - now, 0) / 1000).toFixed(1)} s`);
    }
  }
}
