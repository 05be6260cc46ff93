// The daemon's own account: what it lists, counts and remembers. Whatever changes lights up.

import { fill, foreign, h, light, plain, setText, written } from "/dom.js";
import { CLASSES, DISK_TYPES, FILE_SYSTEMS, POPUP_KINDS, sizeText } from "/units.js";

const COUNTERS = [["fat", "FAT"], ["exfat", "exFAT"], ["ext4", "ext"], ["ntfs", "NTFS"], ["cameras", "cameras"]];

const CAMERA = 6;

// Fields that are numbers of a list, or sizes.
const MEANINGS = {
  class: (value) => CLASSES[value],
  fileSystemType: (value) => FILE_SYSTEMS[value],
  diskType: (value) => DISK_TYPES[value],
  totalSize: sizeText,
  usedSize: sizeText,
};

/** One fact: a name and a value, which lights up when it changes. */
class Fact {
  constructor(name, className) {
    this.value_ = h("dd", {}, "–");
    this.node = h("div", { class: className }, h("dt", {}, name), this.value_);
  }

  /** Shows a value; what does not fit is told to those who point at it. */
  set(text) {
    if (this.text_ !== text) {
      setText(this.value_, written(text));
      this.value_.title = written(text);
      if (this.text_ !== undefined) {
        light(this.node);
      }
      this.text_ = text;
    }
  }
}

function meaning(name, value) {
  const text = MEANINGS[name]?.(value);
  return text ? h("small", {}, ` ${text}`) : null;
}

function fieldValue(value) {
  if (typeof value === "string") {
    return value === "" ? h("span", { class: "none" }, "empty") : plain(value);
  }
  return plain(JSON.stringify(value));
}

/** A device that stays in its place while its fields change. */
class DeviceCard {
  constructor(device) {
    this.values_ = new Map();
    this.title_ = h("strong");
    this.note_ = h("small");
    this.fields_ = h("dl", { class: "device-fields" });
    this.node = h("details", { class: "device" }, h("summary", {}, this.title_, this.note_), this.fields_);
    this.set(device);
  }

  set(device) {
    fill(this.title_, foreign(written(device.displayName || device.product || "no name")));
    fill(
      this.note_,
      plain(device.deviceName || device.deviceKey),
      ` · ${device.class === CAMERA ? "camera" : FILE_SYSTEMS[device.fileSystemType] ?? "unknown"}`,
      device.totalSize ? ` · ${sizeText(device.totalSize)}` : null,
    );
    for (const [name, value] of Object.entries(device)) {
      this.setField_(name, value);
    }
  }

  setField_(name, value) {
    const text = JSON.stringify(value);
    const known = this.values_.get(name);
    if (known?.text === text) {
      return;
    }
    const holder = known?.holder ?? h("div", {}, h("dt", {}, plain(name)), h("dd"));
    fill(holder.lastChild, fieldValue(value), meaning(name, value));
    this.values_.set(name, { text, holder });
    if (known) {
      light(holder);
      light(this.node.firstChild);
    } else {
      this.fields_.append(holder);
    }
  }
}

export class StateView {
  constructor(store) {
    this.tiles_ = {
      running: new Fact("Daemon", "tile"),
      listening: new Fact("USB events", "tile"),
      activated: new Fact("Pop-ups", "tile"),
      standby: new Fact("Standby", "tile"),
      scanning: new Fact("Scan", "tile"),
      kind: new Fact("Last offer", "tile"),
    };
    this.pointers_ = {
      current: new Fact("current device", "pointer"),
      displayed: new Fact("last displayed", "pointer"),
      scan: new Fact("last scan found", "pointer"),
      notice: new Fact("removal notice", "pointer"),
    };
    this.counters_ = new Map(COUNTERS.map(([id, name]) => [id, new Fact(name, "tile")]));
    this.clients_ = h("tbody");
    this.devices_ = h("div", { class: "devices" });
    this.cards_ = new Map();
    this.breaches_ = h("ul", { class: "breaches bad" });
    this.node = h(
      "div",
      { class: "state" },
      this.breaches_,
      h("dl", { class: "tiles three" }, Object.values(this.tiles_).map((tile) => tile.node)),
      h("dl", { class: "pointers" }, Object.values(this.pointers_).map((fact) => fact.node)),
      h("h3", {}, "Counters"),
      h("dl", { class: "tiles five" }, [...this.counters_.values()].map((tile) => tile.node)),
      h("h3", {}, "Devices ", (this.count_ = h("span", { class: "count" }, "0"))),
      this.devices_,
      h("h3", {}, "Clients"),
      h(
        "table",
        { class: "clients" },
        h("thead", {}, h("tr", {}, ["id", "name", "bus name"].map((name) => h("th", { scope: "col" }, name)))),
        this.clients_,
      ),
    );
    store.on("daemon", (daemon) => this.showDaemon_(daemon));
    store.on("devices", (devices) => this.showDevices_(devices));
  }

  showDaemon_(daemon) {
    this.tiles_.running.set(daemon.running ? "running" : "ended");
    this.tiles_.listening.set(daemon.listening ? "taken" : "not yet");
    this.tiles_.scanning.set(daemon.scanning ? "running" : "none");
    this.tiles_.activated.set(daemon.activated ? "activated" : "held back");
    this.tiles_.standby.set(daemon.standby ? "yes" : "no");
    this.tiles_.kind.set(POPUP_KINDS[daemon.notificationKind] ?? String(daemon.notificationKind));
    for (const [id, tile] of this.counters_) {
      tile.set(String(daemon.counters[id]));
    }
    this.pointers_.current.set(daemon.currentDevice ?? "none");
    this.pointers_.displayed.set(daemon.displayedDevice ?? "none");
    this.pointers_.scan.set(daemon.scan ? `${daemon.scan.type} ${daemon.scan.fileName}` : "nothing yet");
    this.pointers_.notice.set(daemon.removalNotice ?? "none");
    fill(this.breaches_, daemon.breaches.map((breach) => h("li", {}, "Breach of the platform's rules: ", plain(breach))));
    this.showClients_(daemon.clients);
  }

  showClients_(clients) {
    const text = JSON.stringify(clients);
    if (text === this.clientsText_) {
      return;
    }
    fill(
      this.clients_,
      clients.map((client) =>
        h("tr", {}, h("td", {}, String(client.id)), h("td", {}, plain(client.name ?? "")), h("td", {}, plain(client.busName))),
      ),
      clients.length === 0 ? h("tr", {}, h("td", { colspan: "3", class: "none" }, "Nobody is registered.")) : null,
    );
    if (this.clientsText_ !== undefined) {
      light(this.clients_);
    }
    this.clientsText_ = text;
  }

  showDevices_(devices) {
    this.count_.textContent = String(devices.length);
    const cards = new Map();
    devices.forEach((device, index) => {
      // Two records can have one key; each then has its own card.
      const key = device.deviceKey;
      const name = cards.has(key) ? `${key} ${index}` : key;
      const card = this.cards_.get(name) ?? new DeviceCard(device);
      cards.set(name, card);
      if (this.cards_.has(name)) {
        card.set(device);
      } else {
        light(card.node.firstChild);
      }
    });
    this.cards_ = cards;
    const nodes = [...cards.values()].map((card) => card.node);
    // Cards that stay are not moved: that would close them and take the focus away.
    [...this.devices_.children].filter((node) => !nodes.includes(node)).forEach((node) => node.remove());
    nodes.forEach((node, index) => {
      if (this.devices_.children[index] !== node) {
        this.devices_.insertBefore(node, this.devices_.children[index] ?? null);
      }
    });
    if (nodes.length === 0) {
      fill(this.devices_, h("p", { class: "none" }, "The daemon lists no device."));
    }
  }
}
