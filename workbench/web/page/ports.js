// The USB ports: what can be plugged in on one side, what is plugged in on the other.

import { fill, h, light, plain, written } from "/dom.js";
import { button, field, onSend, segments, wholeNumber } from "/fields.js";
import { FolderForm } from "/folder-form.js";
import { icon } from "/icons.js";

const PICTURES = { stick: "usb", camera: "camera", disk: "disk" };
const MOST_AT_ONCE = 32;
const SEVERAL = "With more than one device the TV only offers to browse.";
// So many samples have a key.
const KEYED = 9;

export class Ports {
  constructor(node, store, ask, act) {
    this.act_ = act;
    this.known_ = new Set();
    this.samples_ = h("ul", { class: "samples" });
    this.folder_ = new FolderForm(store, ask, act);
    this.forms_ = { samples: this.samples_, folder: this.folder_.node, camera: this.camera_(), hub: this.hub_() };
    this.kinds_ = segments(
      "What to plug in",
      [["samples", "Samples"], ["folder", "Folder"], ["camera", "Camera"], ["hub", "Hub"]],
      (kind) => this.choose_(kind),
    );
    this.list_ = h("ul", { class: "plugged" });
    this.count_ = h("span", { class: "count" }, "0");
    fill(
      node,
      h("h2", { class: "panel-title", id: "ports-title" }, "USB ports"),
      h(
        "div",
        { class: "ports-body" },
        h("div", { class: "plug-in" }, this.kinds_.node, Object.values(this.forms_)),
        h("div", { class: "plugged-in" }, h("h3", {}, "Plugged in ", this.count_), this.list_),
      ),
    );
    this.choose_("samples");
    this.acceptDrops_(node);
    store.onHello((hello) => this.showSamples_(hello.samples));
    store.on("ports", (ports) => this.show_(ports));
  }

  choose_(kind) {
    this.kinds_.set(kind);
    for (const [name, form] of Object.entries(this.forms_)) {
      form.hidden = name !== kind;
    }
    if (kind === "folder") {
      this.folder_.shown();
    }
  }

  showSamples_(samples) {
    fill(
      this.samples_,
      samples.map((sample, index) =>
        h(
          "li",
          {},
          h(
            "button",
            {
              type: "button",
              class: "sample",
              title: sample.text,
              "data-sample": sample.id,
              onclick: (event) => this.plugSample_(event, sample.id),
            },
            h("strong", {}, sample.title, index < KEYED ? h("kbd", { "aria-hidden": "true" }, String(index + 1)) : null),
            h("small", {}, sample.text),
          ),
        ),
      ),
    );
  }

  plugSample_(event, id) {
    this.act_("plugSample", { id });
    // Whoever points at a sample presses OK next, and means the screen; keys come back for another one.
    if (event.detail > 0) {
      document.getElementById("tv").focus({ preventScroll: true });
    }
  }

  camera_() {
    const title = h("input", { type: "text", autocomplete: "off", placeholder: "Camera" });
    const serial = h("input", { type: "text", autocomplete: "off", placeholder: "made up" });
    return this.form_("camera", "Plug the camera in", () => ({
      name: "plugCamera",
      values: { ...(title.value ? { title: title.value } : {}), ...(serial.value ? { serial: serial.value } : {}) },
    }), [field("Product name", title), field("Serial number", serial)]);
  }

  hub_() {
    const count = h("input", { type: "number", min: "1", max: String(MOST_AT_ONCE), value: "4" });
    return this.form_("usb", "Plug the hub in", () => ({
      name: "hub",
      values: { count: wholeNumber(count, "Sticks", 1, MOST_AT_ONCE) },
    }), [field("A hub with this many sticks", count)]);
  }

  form_(picture, text, command, fields) {
    const form = h("form", { class: "plug-form" }, fields, h("button", { class: "button primary" }, icon(picture), h("span", {}, text)));
    const notice = onSend(form, () => {
      const { name, values } = command();
      this.act_(name, values);
    });
    form.append(notice);
    return form;
  }

  acceptDrops_(node) {
    node.addEventListener("dragover", (event) => {
      event.preventDefault();
      node.classList.add("dropping");
    });
    node.addEventListener("dragleave", () => node.classList.remove("dropping"));
    node.addEventListener("drop", (event) => {
      event.preventDefault();
      node.classList.remove("dropping");
      this.choose_("folder");
      this.folder_.drop(event.dataTransfer);
    });
  }

  show_(ports) {
    this.count_.textContent = String(ports.length);
    const hadFocus = this.list_.contains(document.activeElement) ? document.activeElement.dataset.focus : null;
    fill(
      this.list_,
      ports.map((port) => this.row_(port)),
      ports.length === 0 ? h("li", { class: "none" }, "All ports are free.") : null,
      ports.length > 1 ? h("li", { class: "none" }, SEVERAL) : null,
    );
    this.known_ = new Set(ports.map((port) => port.port));
    if (hadFocus) {
      (this.list_.querySelector(`[data-focus="${hadFocus}"]`) ?? document.getElementById("tv")).focus();
    }
  }

  row_(port) {
    const state = port.kind === "camera" ? "camera" : port.mounted ? "mounted" : "not mounted";
    const pull = (busy) => this.act_("pull", { port: port.port, ...(busy ? { busy } : {}) });
    const row = h(
      "li",
      { class: "port", "data-port": port.port },
      h("span", { class: "port-tile" }, icon(PICTURES[port.kind] ?? "usb")),
      h(
        "div",
        { class: "port-text" },
        h("strong", {}, plain(port.title)),
        h("small", { title: port.folder ? written(port.folder) : null }, plain(port.node), ` · ${state}${port.busy ? " · busy" : ""}`),
      ),
      h(
        "div",
        { class: "port-actions" },
        button("eject", "Pull", () => pull(false), { "data-focus": `pull-${port.port}`, "aria-label": `Pull port ${port.port}` }),
        port.kind === "camera" || port.mounted
          ? null
          : button("mount", "Mount", () => this.act_("mount", { port: port.port }), { "data-focus": `mount-${port.port}`, "aria-label": `Mount port ${port.port}` }),
        port.kind !== "camera" && port.mounted
          ? button("bolt", "while read", () => pull(true), { "data-focus": `busy-${port.port}`, "aria-label": `Pull port ${port.port} while it is read`, title: "Pull it while the TV still looks for photos, films and music on it: what was found is told after it is gone" })
          : null,
      ),
    );
    if (!this.known_.has(port.port)) {
      light(row);
    }
    return row;
  }
}
