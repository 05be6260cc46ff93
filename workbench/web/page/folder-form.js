// Plugging in a folder of this machine: its path is typed, dropped, or found by walking through the
// folders.

import { fill, h, plain } from "/dom.js";
import { field } from "/fields.js";
import { icon } from "/icons.js";

const FILE_SYSTEMS = [["fat", "FAT"], ["exfat", "exFAT"], ["ext4", "ext4"], ["ntfs", "NTFS"], ["unknown", "unknown"]];

// After typing, before the folders are asked for.
const PAUSE = 250;

/** A file's address as a path. A percent sign that begins no byte of UTF-8 stands for itself. */
function pathOf(address) {
  return address.replace(/^file:\/\//, "").replace(/(?:%[0-9a-f]{2})+/gi, (bytes) => {
    try {
      return decodeURIComponent(bytes);
    } catch {
      return bytes;
    }
  });
}

export class FolderForm {
  /** `ask` asks the program, `act` carries out. */
  constructor(store, ask, act) {
    this.ask_ = ask;
    this.path_ = h("input", { type: "text", required: true, spellcheck: "false", autocomplete: "off", oninput: () => this.later_() });
    this.title_ = h("input", { type: "text", autocomplete: "off", placeholder: "as the folder" });
    this.system_ = h("select", {}, FILE_SYSTEMS.map(([value, text]) => h("option", { value }, text)));
    this.mounted_ = h("input", { type: "checkbox", checked: true });
    this.folders_ = h("ul", { class: "folders", "aria-label": "Folders in it" });
    this.node = h(
      "form",
      { class: "plug-form" },
      field("Folder, typed, dropped or chosen", this.path_),
      this.folders_,
      h("div", { class: "pair" }, field("Product name", this.title_), field("File system", this.system_)),
      h(
        "div",
        { class: "form-end" },
        h("label", { class: "check" }, this.mounted_, "mounted"),
        h("button", { class: "button primary" }, icon("usb"), h("span", {}, "Plug in")),
      ),
    );
    this.node.addEventListener("submit", (event) => {
      event.preventDefault();
      act("plugFolder", {
        path: this.path_.value.trim(),
        fileSystem: this.system_.value,
        mounted: this.mounted_.checked,
        ...(this.title_.value ? { title: this.title_.value } : {}),
      });
    });
    store.onHello((hello) => {
      this.path_.value ||= hello.home;
    });
  }

  /** Shows the folders once the form comes to view. */
  shown() {
    this.list_();
  }

  /** Takes over the path of something dropped, as far as the browser tells it. */
  drop(transfer) {
    const told = transfer.getData("text/uri-list") || transfer.getData("text/plain");
    const address = told.split(/\r?\n/).find((line) => /^(file:\/\/)?\//.test(line));
    if (address) {
      this.path_.value = address.startsWith("/") ? address : pathOf(address);
      this.list_();
    } else {
      fill(this.folders_, h("li", { class: "none" }, "This browser hides the path of what is dropped: type or choose it."));
    }
    this.path_.focus();
  }

  later_() {
    clearTimeout(this.timer_);
    this.timer_ = setTimeout(() => this.list_(), PAUSE);
  }

  async list_() {
    const asked = this.path_.value.trim();
    try {
      const { path, parent, folders } = await this.ask_("folders", { path: asked });
      // What was typed meanwhile is asked for by itself.
      if (asked === this.path_.value.trim()) {
        this.show_(path, parent, folders);
      }
    } catch (error) {
      fill(this.folders_, h("li", { class: "none" }, plain(error.message)));
    }
  }

  show_(path, parent, folders) {
    const hadFocus = this.folders_.contains(document.activeElement);
    const below = path.endsWith("/") ? path : `${path}/`;
    fill(
      this.folders_,
      parent === null ? null : this.folder_("up", "..", parent),
      folders.map((name) => this.folder_("folder", name, below + name)),
    );
    if (hadFocus) {
      this.folders_.querySelector("button")?.focus();
    }
  }

  folder_(picture, name, path) {
    const choose = () => {
      this.path_.value = path;
      this.list_();
    };
    return h("li", {}, h("button", { type: "button", class: "folder", onclick: choose }, icon(picture), plain(name)));
  }
}
