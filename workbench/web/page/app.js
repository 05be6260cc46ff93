// The wiring of the page: the line to the program, the store, and the parts that show it.

import { CallView } from "/call-view.js";
import { ClockView } from "/clock-view.js";
import { Connection } from "/connection.js";
import { fill, h, plain, setText } from "/dom.js";
import { iconButton } from "/fields.js";
import { helpDialog } from "/help.js";
import { icon } from "/icons.js";
import { isTaken } from "/keys.js";
import { Link } from "/link.js";
import { logView } from "/log.js";
import { Ports } from "/ports.js";
import { Remote } from "/remote.js";
import { ScenariosView } from "/scenarios-view.js";
import { Screen } from "/screen.js";
import { SettingsView } from "/settings-view.js";
import { StateView } from "/state-view.js";
import { Store } from "/store.js";
import { Tabs } from "/tabs.js";
import { themeButton } from "/theme.js";
import { TvTime } from "/tv-time.js";
import { wireView } from "/wire.js";

const at = (id) => document.getElementById(id);

// The token of the address has become a cookie: it need not stand in the address bar and the history,
// where others may read it. A reload comes with the cookie.
history.replaceState(null, "", location.pathname + location.hash);

const message = h("p", { class: "message", role: "status" });
const bus = h("code", { class: "bus" });

/** Says what went wrong, in the line at the foot. */
function fail(error) {
  fill(message, h("span", { class: "bad" }, plain(error.message)));
}

/** Asks the program; the answer is a promise. */
const ask = (name, values) => link.ask(name, values);

/** Carries a command out; a refusal is told at the foot. */
function act(name, values) {
  fill(message);
  link.ask(name, values).catch(fail);
}

/** Lets the time pass until the next timer, and tells which that was. */
function step() {
  const tell = ({ skippedMs, what }) => setText(message, `${(skippedMs / 1000).toFixed(1)} s skipped: ${what}`);
  link.ask("step").then(tell, fail);
}

const store = new Store();
const time = new TvTime(store);
const connection = new Connection(at("veil"), () => store.log.items.at(-1)?.message);
const link = new Link((received) => store.receive(received), (status, unanswered) => connection.is(status, unanswered));
const help = helpDialog();
document.body.append(help);

const clock = new ClockView(store, time, act, step);
fill(
  at("bar"),
  h("h1", { class: "brand" }, icon("usb"), h("span", {}, "portmeld"), h("small", {}, "workbench")),
  connection.node,
  clock.bar,
  h("div", { class: "bar-end" }, themeButton(), iconButton("app", "Keys", () => help.showModal(), { class: "icon-button keys" })),
);
at("bar").querySelector(".keys").replaceChildren("?");
fill(at("foot"), message, h("span", { class: "foot-bus" }, "bus ", bus));

const screen = new Screen(at("tv"), store, time, act);
new Remote(at("remote"), store, (name) => screen.key(name), act);
new Ports(at("ports"), store, ask, act);

/** Makes one dock large, or both as they were. */
function grow(id) {
  const inspector = document.querySelector(".inspector");
  inspector.dataset.large = inspector.dataset.large === id ? "" : id;
}

const log = logView(store, act);
const wire = wireView(store);
new Tabs(at("dock-now"), "State and controls", [
  { id: "state", title: "State", node: new StateView(store).node },
  { id: "call", title: "Call", node: new CallView(store, ask).node },
  { id: "settings", title: "Settings", node: new SettingsView(store, act).node },
  { id: "scenarios", title: "Scenarios", node: new ScenariosView(store, ask, fail).node },
], () => grow("now"));
const streams = new Tabs(at("dock-then"), "What happened", [
  { id: "wire", title: "Wire", node: wire.node, shown: () => wire.update() },
  { id: "log", title: "Log", node: log.node, shown: () => log.update() },
  { id: "timers", title: "Timers", node: clock.node },
], () => grow("then"));

store.onHello((hello) => setText(bus, hello.bus));

document.addEventListener("keydown", (event) => {
  if (event.repeat || isTaken(event)) {
    return;
  }
  const samples = store.hello?.samples ?? [];
  const key = event.key.toLowerCase();
  if (key === "?") {
    help.showModal();
  } else if (key === "t") {
    at("tv").focus();
  } else if (key === "n") {
    step();
  } else if (key === "/") {
    streams.choose("log");
    log.focusSearch();
  } else if (/^[1-9]$/.test(key) && samples[Number(key) - 1]) {
    act("plugSample", { id: samples[Number(key) - 1].id });
  } else {
    return;
  }
  event.preventDefault();
});
