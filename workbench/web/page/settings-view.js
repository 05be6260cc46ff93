// Settings of the television, what its viewer is doing, and services that fail on demand.

import { h } from "/dom.js";
import { field, onSend, toggle, WrongField, wholeNumber } from "/fields.js";
import { icon } from "/icons.js";

const USE_MODE_KEY = "db/menu/support/use_mode";

const DISTRACTION_BITS = [7, 10, 11];

const TRUTHS = { true: true, yes: true, 1: true, false: false, no: false, 0: false };

// How the value of each type is read; each throws WrongField.
const READERS = {
  string: (input) => input.value,
  int: (input) => wholeNumber(input, "Value"),
  bool: (input) => {
    const truth = TRUTHS[input.value.trim().toLowerCase()];
    if (truth === undefined) {
      throw new WrongField(input, "Value: true or false");
    }
    return truth;
  },
};

const FAULTS = [
  ["notification", "Notification server refuses"],
  ["launch", "Launching fails"],
  ["scanSilent", "Content scan says nothing"],
];

export class SettingsView {
  constructor(store, act) {
    this.act_ = act;
    this.store_ = store;
    this.node = h(
      "div",
      { class: "settings" },
      h("div", { class: "column" }, this.settings_(), this.anyKey_()),
      h("div", { class: "column" }, this.context_(), this.faults_()),
    );
    store.onHello((hello) => this.showLanguages_(hello.languages));
    store.on("settings", (settings) => this.showSettings_(settings));
    store.on("context", (context) => this.showContext_(context));
  }

  settings_() {
    this.language_ = h("select", { onchange: () => this.set_("language", "string", this.language_.value) });
    this.shop_ = toggle("Shop mode", (on) => this.set_("shopMode", "bool", on));
    this.demo_ = toggle("Internal demo allowed", (on) => this.set_("demoMode", "int", on ? 0 : -1), "demo mode other than -1");
    this.server_ = h("input", { type: "text", autocomplete: "off", placeholder: "Media server" });
    const form = h(
      "form",
      { class: "inline" },
      field("A media server went away", this.server_),
      h("button", { class: "button" }, "Notice"),
    );
    form.addEventListener("submit", (event) => {
      event.preventDefault();
      this.set_("dlnaName", "string", this.server_.value || this.server_.placeholder);
    });
    return h("fieldset", {}, h("legend", {}, "Settings"), field("Language of the menu", this.language_), this.shop_.node, this.demo_.node, form);
  }

  context_() {
    this.bits_ = DISTRACTION_BITS.map((bit) => ({
      value: 2 ** bit,
      control: toggle(`Distraction-free, bit ${bit}`, () => this.sendBits_(2 ** bit)),
    }));
    this.companion_ = toggle("Companion application runs", (running) => this.act_("companion", { running }), "it is told instead of the viewer");
    return h("fieldset", {}, h("legend", {}, "The viewer"), this.bits_.map((bit) => bit.control.node), this.companion_.node);
  }

  faults_() {
    this.faultSwitches_ = new Map(FAULTS.map(([service, text]) => [service, toggle(text, (on) => this.act_("fault", { service, on }))]));
    return h("fieldset", {}, h("legend", {}, "Failing services"), [...this.faultSwitches_.values()].map((one) => one.node));
  }

  anyKey_() {
    const key = h("input", { type: "text", spellcheck: "false", autocomplete: "off", placeholder: USE_MODE_KEY });
    const type = h("select", {}, Object.keys(READERS).map((name) => h("option", {}, name)));
    const value = h("input", { type: "text", autocomplete: "off" });
    const form = h(
      "form",
      { class: "any-key" },
      field("Key", key),
      h("div", { class: "pair" }, field("Type", type), field("Value", value)),
      h("button", { class: "button" }, icon("save"), h("span", {}, "Write")),
    );
    const notice = onSend(form, () => {
      if (key.value.trim() === "") {
        throw new WrongField(key, "Key: which one?");
      }
      this.set_(key.value.trim(), type.value, READERS[type.value](value));
    });
    form.append(notice);
    return h("fieldset", {}, h("legend", {}, "Any key of the settings store"), form);
  }

  set_(key, type, value) {
    this.act_("setting", { key, type, value });
  }

  /** Bits that have no switch here are left as they are. */
  sendBits_(bit) {
    this.act_("context", { bits: (this.store_.state.context?.distraction ?? 0) ^ bit });
  }

  showLanguages_(languages) {
    const chosen = this.language_.value || this.store_.state.settings?.language;
    this.language_.replaceChildren(
      ...languages.map(({ code, name }) => h("option", { value: code, selected: code === chosen }, name)),
    );
  }

  showSettings_(settings) {
    // A language from elsewhere (a scenario, another page) need not be on the list.
    if (![...this.language_.options].some((option) => option.value === settings.language)) {
      this.language_.append(h("option", { value: settings.language }, settings.language || "not set"));
    }
    this.language_.value = settings.language;
    this.shop_.set(settings.shopMode);
    this.demo_.set(settings.demoMode !== -1);
  }

  showContext_(context) {
    for (const bit of this.bits_) {
      bit.control.set((context.distraction & bit.value) !== 0);
    }
    this.companion_.set(context.companionRunning);
    for (const [service, control] of this.faultSwitches_) {
      control.set(Boolean(context.faults?.[service]));
    }
  }
}
