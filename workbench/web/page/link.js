// The line to the program: one WebSocket that is opened again when it breaks. What comes in is
// handed on by its type; what is asked for is answered through a promise. The cookie that came with
// the page is its ticket.

const FIRST_PAUSE = 500;
const LONGEST_PAUSE = 5000;

export class Link {
  /**
   * `receive` gets every message that is no answer, parsed; `status` gets "connecting", "open" or
   * "lost", the last with the orders that were not answered, as texts.
   */
  constructor(receive, status) {
    this.receive_ = receive;
    this.status_ = status;
    this.waiting_ = new Map();
    this.next_ = 1;
    this.pause_ = FIRST_PAUSE;
    this.open_();
  }

  /** Asks for something by name; resolves to the result, rejects with an Error of one line. */
  ask(name, values = {}) {
    return new Promise((resolve, reject) => {
      if (this.socket_.readyState !== WebSocket.OPEN) {
        reject(new Error("the workbench is not connected"));
        return;
      }
      const id = this.next_++;
      this.waiting_.set(id, { resolve, reject, order: values.member ?? name });
      this.socket_.send(JSON.stringify({ id, do: name, with: values }));
    });
  }

  open_() {
    this.status_("connecting");
    const address = new URL("/ws", location.href);
    address.protocol = "ws:";
    this.socket_ = new WebSocket(address);
    this.socket_.addEventListener("open", () => {
      this.pause_ = FIRST_PAUSE;
      this.status_("open");
    });
    this.socket_.addEventListener("message", (event) => this.take_(JSON.parse(event.data)));
    this.socket_.addEventListener("close", () => this.lost_());
  }

  take_(message) {
    // The program holds back what a page cannot keep up with.
    this.socket_.send(JSON.stringify({ do: "ack", with: { seq: message.seq } }));
    if (message.type !== "done" && message.type !== "failed") {
      this.receive_(message);
      return;
    }
    const asked = this.waiting_.get(message.id);
    this.waiting_.delete(message.id);
    if (message.type === "done") {
      asked?.resolve(message.result);
    } else {
      asked?.reject(new Error(message.error));
    }
  }

  lost_() {
    this.status_("lost", [...this.waiting_.values()].map(({ order }) => order));
    for (const { reject } of this.waiting_.values()) {
      reject(new Error("the connection broke"));
    }
    this.waiting_.clear();
    setTimeout(() => this.open_(), this.pause_);
    this.pause_ = Math.min(this.pause_ * 2, LONGEST_PAUSE);
  }
}
