// What somebody who sees the page for the first time can do next, or why nothing happens on the screen.

// What the program calls the timer that runs then.
const AFTER_WAKE_UP = /after a wake-up/;

const QUIET = 2 ** 7 | 2 ** 10 | 2 ** 11;

// The first that holds is shown: [whether it holds, what it says]. Those that are true of a picture
// without a window over it stand last.
const HINTS = [
  [({ daemon }) => !daemon.listening, "The daemon takes no USB events yet. Next timer (N) lets the time until then pass."],
  [
    ({ daemon, clock }) => !daemon.activated && clock.timers.some(({ what }) => AFTER_WAKE_UP.test(what)),
    "Just switched on: for a minute nothing is offered. Next timer (N) lets that minute pass.",
  ],
  [({ daemon }) => !daemon.activated, "Pop-ups are held back: a client has called SetEnablePopUP."],
  [({ context }) => context.faults.notification, "The notification server refuses, so nothing pops up: see Settings."],
  [({ context }) => (context.distraction & QUIET) !== 0, "Distraction-free: nothing pops up. See Settings."],
  [
    ({ context, launched }) => context.companionRunning && !launched,
    "The companion application runs: it is told of devices, and nothing pops up. See Settings.",
  ],
  [({ ports, launched }) => ports.length === 0 && !launched, "Nothing is plugged in. Choose a sample below."],
];

/** The members of the state that a hint depends on. */
export const HINTED = ["daemon", "clock", "context", "ports", "launched", "popup"];

/** The hint for a state; "" when there is none, or a pop-up is there to look at. */
export function hintFor(state) {
  const isKnown = HINTED.every((member) => state[member] !== undefined);
  return isKnown && !state.popup ? HINTS.find(([holds]) => holds(state))?.[1] ?? "" : "";
}
