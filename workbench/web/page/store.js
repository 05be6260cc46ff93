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
  }

  /** Calls back with (value, previous value) when a member of the state arrives. */
  on(member, listener) {
    this.members_.set(member, [...(this.members_.get(member) ?? []), listener]);
  }

  /** Calls back with the greeting of the program, at every connection. */
  onHello(listener) {
    this.helloListeners_.push(listener);
  }

  /** Calls back with each line of a replayed scenario, and with its end. */
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
        // The clock first: others reckon with it.
        this.change_("clock", message.state.clock);
        for (const [member, value] of Object.entries(message.state)) {
          if (member !== "clock") {
            this.change_(member, value);
          }
        }
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
        this.replayListeners_.forEach((listener) => listener(message));
        break;
      default:
        console.warn("a message of unknown type", message.type);
    }
  }

  change_(member, value) {
    const previous = this.state[member];
    this.state[member] = value;
    (this.members_.get(member) ?? []).forEach((listener) => listener(value, previous));
  }
}
