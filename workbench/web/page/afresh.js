// The television as if it had just been started: nothing plugged in, nothing on the screen, every switch
// back, and the minute over that follows switching on. What it still remembers are its launches, its
// background music and its clients.

const FAULTS = ["notification", "launch", "scanSilent"];

/** The settings that a television starts with, as far as a page can change them. */
export const FIRST_SETTINGS = { shopMode: false, demoMode: 0, language: "en" };

// Longer than every pop-up stays and every timer of the daemon runs.
const LONG_ENOUGH = 61000;

/** The orders that lead from a state to a fresh television, in their sequence: [name, values]. */
export function ordersAfresh({ power, context, settings, ports, launched, popup, daemon }) {
  const orders = [];
  if (power !== "on") {
    orders.push(["wake", {}]);
  }
  for (const service of FAULTS.filter((name) => context.faults[name])) {
    orders.push(["fault", { service, on: false }]);
  }
  if (context.companionRunning) {
    orders.push(["companion", { running: false }]);
  }
  if (context.distraction !== 0) {
    orders.push(["context", { bits: 0 }]);
  }
  for (const [key, value] of Object.entries(FIRST_SETTINGS).filter(([key, value]) => settings[key] !== value)) {
    orders.push(["setting", { key, value }]);
  }
  orders.push(...ports.map(({ port }) => ["pull", { port }]));
  if (launched) {
    orders.push(["key", { name: "home" }]);
  }
  if (!daemon.activated && power === "on") {
    orders.push(["call", { client: 1, member: "SetEnablePopUP", arguments: [true] }]);
  }
  if (orders.length > 0 || popup) {
    orders.push(["skip", { ms: LONG_ENOUGH }]);
  }
  return orders;
}
