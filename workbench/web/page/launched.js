// The application that was launched, as a card that fills the screen: who it is, what it is asked
// to play or to open, and everything that it was given.

import { foreign, h, plain } from "/dom.js";
import { icon } from "/icons.js";
import { sizeText } from "/units.js";
import { tree } from "/json-view.js";

const BROWSER = "org.quillon.folian";
const PLAYERS = new Set(["org.norvane.vidreel", "org.norvane.picreel"]);

const PICTURES = {
  "org.quillon.folian": "folder",
  "org.norvane.vidreel": "film",
  "org.norvane.picreel": "photo",
  "org.norvane.shopreel": "shop",
  "org.norvane.floorreel": "shop",
};

// What somebody who sees an application for the first time cannot guess.
const REASONS = {
  "org.norvane.lumet":
    "It is told of devices while it runs, and the button Browse opens it when more than one device is connected.",
  "org.norvane.shopreel": "In shop mode it plays a stick with a demonstration film at once.",
  "org.norvane.floorreel": "The internal demo player of shop mode. The switch “Internal demo allowed” keeps it away.",
};
const LEFTOVERS =
  "The daemon fills one launch handle again and again: what an earlier launch was given, a song for instance, is given once more.";

// Extra data in sizes of 1024 bytes.
const SIZES = new Set(["available_size", "total_size"]);

function capital(text) {
  return text.charAt(0).toUpperCase() + text.slice(1);
}

function term(name, value) {
  return [h("dt", {}, plain(name)), h("dd", {}, value)];
}

function valueOf(name, value) {
  if (SIZES.has(name) && /^-?\d+$/.test(value)) {
    return h("span", {}, `${sizeText(Number(value))} `, h("small", {}, value));
  }
  return value === "" ? h("span", { class: "none" }, "empty") : plain(value);
}

function listItem(item, isCurrent) {
  const facts = ["file_format", "file_size", "file_date"].filter((name) => item[name]);
  return h(
    "li",
    { class: isCurrent ? "track current" : "track", "aria-current": isCurrent ? "true" : null },
    h("span", { class: "track-mark" }, isCurrent ? icon("play") : null),
    h(
      "div",
      {},
      h("strong", { class: "track-name" }, foreign(item.file_name)),
      h("div", { class: "track-facts" }, facts.map((name) => plain(item[name], { class: "fact" }))),
      h("div", { class: "track-path" }, plain(item.file_path)),
    ),
  );
}

/** The play list, laid out: its items, then what the player may do with them. */
function playListView(list) {
  const flags = Object.entries(list).filter(([, value]) => typeof value === "boolean");
  const rest = Object.entries(list).filter(
    ([name, value]) => name !== "items" && typeof value !== "boolean",
  );
  return h(
    "div",
    { class: "play-list" },
    h(
      "ol",
      { class: "tracks" },
      (list.items ?? []).map((item, index) => listItem(item, index === (list.play_index ?? 0))),
    ),
    h("dl", { class: "given" }, rest.map(([name, value]) => term(name, valueOf(name, String(value))))),
    h(
      "ul",
      { class: "flags" },
      flags.map(([name, value]) =>
        h("li", { class: value ? "flag on" : "flag" }, icon(value ? "check" : "close"), plain(name)),
      ),
    ),
  );
}

/** What plays when it came without a play list: music brings its facts one by one. */
function songView(extra) {
  return h(
    "div",
    { class: "song" },
    icon("song"),
    h("strong", { class: "track-name" }, foreign(extra.music_title || extra.file_name)),
    h("div", { class: "track-facts" }, foreign(extra.music_artist), " · ", foreign(extra.music_album)),
  );
}

/**
 * What an application is launched for, in large. Data of earlier launches stay on the daemon's one
 * launch handle, so only what belongs to this application counts, and nothing that could be either.
 */
function headline({ app, extra, playList }) {
  if (PLAYERS.has(app) && playList) {
    return playListView(playList);
  }
  const isSong = "music_url" in extra;
  const isDevice = "device_path" in extra;
  if (app !== BROWSER || isSong === isDevice) {
    return null;
  }
  return isSong ? songView(extra) : h("p", { class: "launched-device" }, foreign(extra.device_name));
}

/** The card. */
export function launchedView(launched) {
  const { app, extra, playList, number } = launched;
  const shown = Object.entries(extra).filter(([name]) => !(playList && name === "play_list_data"));
  return h(
    "div",
    { class: "launched", "data-app": app },
    h(
      "header",
      { class: "launched-head" },
      h("span", { class: "launched-tile" }, icon(PICTURES[app] ?? "app")),
      h(
        "div",
        {},
        h("h2", { class: "launched-name" }, capital(launched.name)),
        h("p", { class: "launched-id" }, plain(app)),
      ),
      h("span", { class: "launched-number" }, `launch ${number}`),
    ),
    h(
      "div",
      { class: "launched-body", tabindex: "0", role: "region", "aria-label": "What the application was given" },
      headline(launched),
      REASONS[app] ? h("p", { class: "launched-why" }, REASONS[app]) : null,
      number > 1 && shown.length > 0 ? h("p", { class: "none" }, LEFTOVERS) : null,
      h("dl", { class: "given" }, shown.map(([name, value]) => term(name, valueOf(name, value)))),
      playList ? h("details", { class: "raw" }, h("summary", {}, "play_list_data as JSON"), tree(playList)) : null,
      shown.length === 0 && !playList ? h("p", { class: "none" }, "Launched without any data.") : null,
    ),
  );
}
