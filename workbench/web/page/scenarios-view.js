// Scenarios: what was done is recorded as a small text, saved, and replayed line by line.

import { ordersAfresh } from "/afresh.js";
import { fill, h, plain } from "/dom.js";
import { button, field } from "/fields.js";

const FIRST_LINE = "portmeld-scenario 1";
const INTRODUCTION =
  "Most scenarios expect a TV with nothing plugged in and every switch as at the start: tidying up makes it so. Untick “no waiting” to watch a replay at the pace of the clock.";
// What no tidying up can bring back.
const ONLY_ONCE = /\/dev\/sd|counters|GetDeviceCount|reply/;
const ADVICE =
  "Names such as /dev/sda1 are given once, and the daemon's counters outlive a wake-up: what expects those needs a TV that was just started. portmeld-workbench --replay FILE --headless starts one.";

export class ScenariosView {
  constructor(store, ask, fail) {
    this.store_ = store;
    this.ask_ = ask;
    this.fail_ = fail;
    this.isRecording_ = false;
    this.isReplaying_ = false;
    this.title_ = h("input", { type: "text", autocomplete: "off", placeholder: "what it shows" });
    this.record_ = button("record", "Record", () => this.toggleRecording_(), { class: "button record", "aria-pressed": "false" });
    this.note_ = h("span", { class: "record-note", role: "status" });
    this.ready_ = h("select", { "aria-label": "Ready-made scenario", onchange: () => this.choose_() });
    this.text_ = h("textarea", { spellcheck: "false", "aria-label": "Scenario", placeholder: `${FIRST_LINE}\nplugSample one-photo\nexpect popup play` });
    this.results_ = h("ol", { class: "replay", "aria-label": "Replayed lines", tabindex: "0" });
    this.verdict_ = h("p", { class: "verdict", role: "status" });
    fill(this.results_, h("li", { class: "none" }, h("span", {}, INTRODUCTION)));
    this.tidies_ = h("input", { type: "checkbox", checked: true });
    this.skips_ = h("input", { type: "checkbox", checked: true });
    this.lastLine_ = Infinity;
    this.replay_ = button("play", "Replay", () => this.toggleReplay_(), { class: "button primary" });
    this.file_ = h("input", { type: "file", accept: ".txt,.scenario,text/plain", hidden: true, onchange: () => this.load_() });
    this.node = h(
      "div",
      { class: "scenarios" },
      h("div", { class: "scenario-bar" }, this.record_, field("Title", this.title_, "field beside"), this.note_),
      h(
        "div",
        { class: "scenario-bar" },
        this.replay_,
        this.ready_,
        button("save", "Save", () => this.save_()), button("open", "Load", () => this.file_.click()),
        this.file_,
      ),
      h("div", { class: "scenario-text" }, this.text_, h("div", { class: "scenario-results" }, this.choices_(), this.results_, this.verdict_)),
    );
    store.onHello((hello) => this.showReady_(hello.scenarios));
    store.on("recording", (recording) => this.showRecording_(recording));
    store.on("replaying", (replaying) => this.showReplaying_(replaying));
    store.onReplay((messages) => this.showReplay_(messages));
  }

  choices_() {
    return h(
      "div",
      { class: "scenario-choices" },
      h("label", { class: "check", title: "Pulls everything, goes home, sets every switch back and lets a minute pass, then replays" }, this.tidies_, "tidy up first"),
      h("label", { class: "check", title: "Stops the clock meanwhile: the waiting in a scenario is then skipped" }, this.skips_, "no waiting"),
    );
  }

  showReady_(scenarios) {
    this.scenarios_ = scenarios;
    fill(
      this.ready_,
      h("option", { value: "" }, "Ready-made …"),
      scenarios.map((scenario) => h("option", { value: scenario.id }, scenario.title)),
    );
  }

  choose_() {
    const chosen = this.scenarios_.find((scenario) => scenario.id === this.ready_.value);
    if (chosen) {
      this.text_.value = chosen.text;
      this.title_.value = chosen.title;
    }
  }

  showRecording_(recording) {
    this.isRecording_ = recording !== null;
    this.record_.setAttribute("aria-pressed", String(this.isRecording_));
    this.record_.lastChild.textContent = this.isRecording_ ? "Stop" : "Record";
    fill(this.note_, this.isRecording_ ? `${recording.steps} steps so far` : null);
  }

  async toggleRecording_() {
    const title = this.title_.value ? { title: this.title_.value } : {};
    try {
      const text = await this.ask_("record", this.isRecording_ ? { on: false } : { on: true, ...title });
      if (typeof text === "string") {
        this.text_.value = text;
      }
    } catch (error) {
      this.fail_(error);
    }
  }

  showReplaying_(replaying) {
    this.isReplaying_ = replaying !== null;
    this.replay_.lastChild.textContent = this.isReplaying_ ? "Stop" : "Replay";
    if (this.isReplaying_) {
      fill(this.verdict_, `Line ${replaying.line} of ${replaying.lines}`);
    }
  }

  async toggleReplay_() {
    try {
      if (this.isReplaying_) {
        await this.ask_("stopReplay");
      } else {
        fill(this.results_);
        fill(this.verdict_);
        await this.prepare_();
        await this.ask_("replay", { text: this.text_.value, noWaiting: this.skips_.checked });
      }
    } catch (error) {
      fill(this.verdict_, h("span", { class: "bad" }, plain(error.message)));
    }
  }

  async prepare_() {
    const orders = this.tidies_.checked ? ordersAfresh(this.store_.state) : [];
    await Promise.all(orders.map(([name, values]) => this.ask_(name, values)));
  }

  /** Shows what came within one frame. */
  showReplay_(messages) {
    const lines = document.createDocumentFragment();
    for (const message of messages) {
      if (message.type === "replay") {
        // The lines of a replay rise: another one has begun, perhaps on another page.
        if (message.line <= this.lastLine_) {
          lines.replaceChildren();
          fill(this.results_);
        }
        this.lastLine_ = message.line;
        lines.append(this.line_(message));
      }
    }
    this.results_.append(lines);
    this.results_.scrollTop = this.results_.scrollHeight;
    const last = messages.at(-1);
    if (last.type === "replayEnd") {
      this.end_(last);
    }
  }

  line_(step) {
    return h(
      "li",
      { class: step.ok ? "ok" : "bad", "data-line": step.line },
      h("span", { class: "mark" }, step.ok ? "ok" : "not ok"),
      h("span", {}, plain(step.text), step.error ? h("small", { class: "bad" }, plain(step.error)) : null),
    );
  }

  end_(message) {
    this.lastLine_ = Infinity;
    const text = message.ok ? "Everything held." : message.error ?? "Something did not hold.";
    fill(this.verdict_, h("span", { class: message.ok ? "good" : "bad" }, plain(text)));
    const wrong = [...this.results_.querySelectorAll("li.bad")];
    if (wrong.some((line) => ONLY_ONCE.test(line.textContent))) {
      wrong.at(-1).after(h("li", { class: "none" }, h("span", {}, ADVICE)));
    }
    wrong[0]?.scrollIntoView({ block: "start" });
  }

  save_() {
    const name = (this.title_.value.trim() || "scenario").replace(/[^\p{L}\p{N}]+/gu, "-").toLowerCase();
    const address = URL.createObjectURL(new Blob([this.text_.value], { type: "text/plain" }));
    h("a", { href: address, download: `${name}.scenario` }).click();
    URL.revokeObjectURL(address);
  }

  async load_() {
    const [file] = this.file_.files;
    if (file) {
      this.text_.value = await file.text();
      this.file_.value = "";
    }
  }
}
