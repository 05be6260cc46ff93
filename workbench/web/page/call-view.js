// A form for each method of the bus, to be called as any client, with the gdbus line that does the
// same from a terminal.

import { fill, h, plain } from "/dom.js";
import { field, iconButton, onSend, wholeNumber } from "/fields.js";
import { parsed, tree } from "/json-view.js";
import { METHODS } from "/methods.js";

const MOST_CLIENTS = 999;

export class CallView {
  /** `ask` makes a request and returns a promise. */
  constructor(store, ask) {
    this.ask_ = ask;
    this.client_ = h("input", { type: "number", value: "1", min: "0", max: String(MOST_CLIENTS), oninput: () => this.onClient_() });
    this.choice_ = h(
      "select",
      { size: "12", "aria-label": "Method", class: "methods", onchange: () => this.choose_() },
      METHODS.map((method, index) => h("option", { value: String(index), selected: index === 0 }, method.member)),
    );
    this.does_ = h("p", { class: "call-does" });
    this.arguments_ = h("div", { class: "call-arguments" });
    this.silent_ = h("input", { type: "checkbox", onchange: () => this.showLine_() });
    this.line_ = h("code", { class: "gdbus", tabindex: "0", "aria-label": "gdbus line" });
    this.result_ = h("div", { class: "call-result", role: "status" });
    this.copy_ = iconButton("copy", "Copy the gdbus line", () => this.copyLine_());
    const form = h(
      "form",
      { class: "call-form" },
      this.does_,
      this.arguments_,
      h("div", { class: "call-go" }, h("button", { class: "button primary" }, "Call"), h("label", { class: "check" }, this.silent_, "no reply wanted")),
      this.result_,
      h("div", { class: "gdbus-box" }, this.line_, this.copy_),
    );
    this.result_.before(onSend(form, () => this.call_(this.request_())));
    this.node = h("div", { class: "call-panel" }, this.choice_, form);
    this.choose_();
    // The line holds the address of the bus, which comes with the greeting.
    store.onHello(() => this.showLine_());
  }

  choose_() {
    this.method_ = METHODS[Number(this.choice_.value)];
    fill(this.does_, h("strong", {}, this.method_.member), ` ${this.method_.does}. `, this.method_.warns ? h("em", {}, this.method_.warns) : null, this.method_.silent ? h("em", {}, "Never answered.") : null);
    this.silent_.checked = Boolean(this.method_.silent);
    this.inputs_ = this.method_.takes.map((argument) => this.input_(argument));
    fill(this.arguments_, field("as client", this.client_), this.inputs_.map((input, index) => field(this.method_.takes[index].name, input, input.type === "checkbox" ? "check" : "field")));
    fill(this.result_);
    this.showLine_();
  }

  input_(argument) {
    const types = { i: "number", b: "checkbox", s: "text" };
    const input = h("input", { type: types[argument.type], oninput: () => this.showLine_(), autocomplete: "off", spellcheck: "false" });
    if (argument.type === "b") {
      input.checked = argument.start;
    } else {
      input.value = argument.start ?? this.client_.value;
    }
    return input;
  }

  onClient_() {
    this.method_.takes.forEach((argument, index) => {
      if (argument.start === null) {
        this.inputs_[index].value = this.client_.value;
      }
    });
    this.showLine_();
  }

  /** What the form asks for; throws WrongField. */
  request_() {
    return {
      client: wholeNumber(this.client_, "as client", 0, MOST_CLIENTS),
      member: this.method_.member,
      arguments: this.method_.takes.map((argument, index) => {
        const input = this.inputs_[index];
        return { i: () => wholeNumber(input, argument.name), b: () => input.checked, s: () => input.value }[argument.type]();
      }),
    };
  }

  async showLine_() {
    const turn = {};
    this.latest_ = turn;
    let text;
    try {
      text = (await this.ask_("gdbus", this.request_())).line;
    } catch (error) {
      text = error.message;
    }
    // A later change may have been answered before.
    if (this.latest_ === turn) {
      this.line_.textContent = text;
    }
  }

  async copyLine_() {
    const text = this.line_.textContent;
    try {
      await navigator.clipboard.writeText(text);
      this.say_("Copied.");
    } catch {
      getSelection().selectAllChildren(this.line_);
      this.say_("The line is selected: copy it with Ctrl+C.");
    }
  }

  async call_(request) {
    const member = this.method_.member;
    fill(this.result_, h("p", { class: "none" }, "…"));
    try {
      const result = await this.ask_("call", { ...request, ...(this.silent_.checked ? { noReply: true } : {}) });
      if (member === this.method_.member) {
        this.showResult_(result);
      }
    } catch (error) {
      this.say_(error.message, "bad");
    }
  }

  showResult_(result) {
    if (result.error) {
      this.say_(`${result.error}: ${result.message}`, "bad");
    } else if (result.sent) {
      this.say_("Sent.");
    } else {
      const values = result.reply;
      fill(this.result_, values.length === 0 ? h("p", {}, "Answered, without a value.") : values.map((value) => tree(parsed(value))));
    }
  }

  say_(text, className = null) {
    fill(this.result_, h("p", { class: className }, plain(text)));
  }
}
