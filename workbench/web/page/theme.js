// Light or dark: as the system says, or as a person chose on this machine.

import { iconButton } from "/fields.js";
import { icon } from "/icons.js";

const KEY = "portmeld-workbench-theme";
const CHOICES = [["auto", "Colours: as the system"], ["light", "Colours: light"], ["dark", "Colours: dark"]];
const PICTURES = { auto: "auto", light: "sun", dark: "moon" };

/** A button that goes round the choices. */
export function themeButton() {
  const node = iconButton("auto", "", () => apply(CHOICES[(now() + 1) % CHOICES.length][0]));
  const now = () => CHOICES.findIndex(([name]) => name === (document.documentElement.dataset.theme ?? "auto"));
  const apply = (choice) => {
    if (choice === "auto") {
      delete document.documentElement.dataset.theme;
    } else {
      document.documentElement.dataset.theme = choice;
    }
    localStorage.setItem(KEY, choice);
    const text = CHOICES.find(([name]) => name === choice)[1];
    node.setAttribute("aria-label", text);
    node.title = text;
    node.replaceChildren(icon(PICTURES[choice]));
  };
  const stored = localStorage.getItem(KEY);
  apply(stored in PICTURES ? stored : "auto");
  return node;
}
