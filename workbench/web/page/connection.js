// How the line to the program stands, as the page shows it. A line that is back at once is no news.

import { fill, h, plain, setText } from "/dom.js";

const TEXTS = { connecting: "Connecting", open: "Connected", lost: "Not connected" };
const ADVICE =
  "The workbench does not answer. If it was ended, start it again and open the address that it prints.";

// So long a broken line may take to come back before a person is told.
const PATIENCE = 2500;

export class Connection {
  /** `veil` covers the page while nothing can be done in it; `lastWords` tells what was logged last. */
  constructor(veil, lastWords) {
    this.veil_ = veil;
    this.lastWords_ = lastWords;
    this.unanswered_ = [];
    this.node = h("span", { class: "status" });
    this.waiting_ = null;
    this.show_("connecting");
  }

  /** Takes each "connecting", "open" and "lost" of the line; `unanswered` names orders. */
  is(status, unanswered = []) {
    this.unanswered_.push(...unanswered);
    if (status === "open") {
      this.unanswered_ = [];
      clearTimeout(this.waiting_);
      this.waiting_ = null;
      this.show_("open");
    } else if (status === "lost") {
      // Tries that fail too belong to the same loss.
      this.waiting_ ??= setTimeout(() => this.show_("lost"), PATIENCE);
    }
  }

  show_(status) {
    if (this.node.dataset.status === status) {
      return;
    }
    this.node.dataset.status = status;
    setText(this.node, TEXTS[status]);
    this.veil_.hidden = status !== "lost";
    fill(this.veil_, status === "lost" ? h("div", { role: "alert" }, h("p", {}, ADVICE), this.known_()) : null);
  }

  /** What is known of the reason. */
  known_() {
    const [order] = this.unanswered_;
    const words = this.lastWords_();
    return [
      order ? h("p", {}, "It ended, or was lost, during: ", h("code", {}, plain(order)), ".") : null,
      words ? h("p", {}, "The last line of the daemon's log: ", h("code", {}, plain(words))) : null,
    ];
  }
}
