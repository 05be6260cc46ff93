// What the page knows of the television: the state as the program sends it, and the two streams
// (log, wire). Parts of the page subscribe to what they show; nothing here touches the document.

/** The latest lines of something that never ends; numbers ("n") tell what came twice. */
export class Stream {
  constructor(limit) {
    this.limit_ = limit;
    this.items = [];
    this.last_ = -1;
    this.listeners_ = [];
    this.due_ = false;
  }

  /** Calls back after lines came or went, once for all that came together. */
  subscribe(listener) {
    this.listeners_.push(listener);
  }

  append(items) {
    for (const item of items) {
      if (item.n > this.last_) {
        this.last_ = item.n;
        this.items.push(item);
      }
    }
    // Cut rarely and much: every cut moves the rest.
    if (this.items.length > this.limit_ * 1.25) {
      this.items.splice(0, this.items.length - this.limit_);
    }
    this.announce_();
  }

  /** Forgets the lines but not their numbers. */
  clear() {
    this.items = [];
    this.announce_();
  }

  /** Begins again with a program that counts from the start. */
  restart() {
    this.last_ = -1;
    this.clear();
  }

  announce_() {
    if (!this.due_) {
      this.due_ = true;
      requestAnimationFrame(() => {
        this.due_ = false;
        this.listeners_.forEach((listener) => listener());
      });
    }
  }
}

export class Store {
  constructor() {
    this.hello = null;
    this.state = {};
    this.log = new Stream(20000);
    this.wire = new Stream(5000);
    this.members_ = new Map();
    this.helloListeners_ = [];
    this.replayListeners_ = [];
    this.changed_ = new Set();
    this.replayed_ = [];
    this.due_ = false;
  }

  /** Calls back with the value when a member of the state has arrived, at most once in a frame. */
  on(member, listener) {
    this.members_.set(member, [...(this.members_.get(member) ?? []), listener]);
  }

  /** Calls back with the greeting of the program, at every connection. */
  onHello(listener) {
    this.helloListeners_.push(listener);
  }

  /** Calls back in each frame with what has come of a replay: its lines, and its end. */
  onReplay(listener) {
    this.replayListeners_.push(listener);
  }

  /** Takes a message of the program. */
  receive(message) {
    switch (message.type) {
      case "hello":
        if (this.hello && this.hello.bus !== message.bus) {
          this.log.restart();
          this.wire.restart();
        }
        this.hello = message;
        this.helloListeners_.forEach((listener) => listener(message));
        break;
      case "state":
        Object.entries(message.state).forEach(([member, value]) => this.change_(member, value));
        break;
      case "change":
        this.change_(message.path, message.value);
        break;
      case "log":
        this.log.append(message.lines);
        break;
      case "wire":
        this.wire.append(message.messages);
        break;
      case "logCleared":
        this.log.clear();
        break;
      case "replay":
      case "replayEnd":
        this.replayed_.push(message);
        this.announceSoon_();
        break;
      default:
        console.warn("a message of unknown type", message.type);
    }
  }

  change_(member, value) {
    this.state[member] = value;
    this.changed_.add(member);
    this.announceSoon_();
  }

  /** Messages come faster than anybody sees: what is shown is drawn once in a frame. */
  announceSoon_() {
    if (!this.due_) {
      this.due_ = true;
      requestAnimationFrame(() => this.announce_());
    }
  }

  announce_() {
    this.due_ = false;
    // The clock first: others reckon with it.
    const changed = [...this.changed_].sort((one, other) => (other === "clock") - (one === "clock"));
    this.changed_.clear();
    const replayed = this.replayed_;
    this.replayed_ = [];
    for (const member of changed) {
      (this.members_.get(member) ?? []).forEach((listener) => listener(this.state[member]));
    }
    if (replayed.length > 0) {
      this.replayListeners_.forEach((listener) => listener(replayed));
    }
  }
}
