// The television's time between two messages: it runs on as its clock's mode says.

export class TvTime {
  constructor(store) {
    this.base_ = 0;
    this.at_ = performance.now();
    this.rate_ = 0;
    store.on("clock", (clock) => {
      this.base_ = clock.now;
      this.at_ = performance.now();
      this.rate_ = clock.rate;
    });
  }

  /** Milliseconds since the television was started. */
  now() {
    return this.base_ + (performance.now() - this.at_) * this.rate_;
  }
}

/** "1:02:03.4"-like text of a time in milliseconds; hours only when there are any. */
export function timeText(milliseconds, digits = 0) {
  const seconds = Math.max(milliseconds, 0) / 1000;
  const hours = Math.floor(seconds / 3600);
  const minutes = Math.floor(seconds / 60) % 60;
  const rest = (Math.floor((seconds % 60) * 10 ** digits) / 10 ** digits).toFixed(digits);
  const padded = rest.padStart(digits ? digits + 3 : 2, "0");
  return hours ? `${hours}:${String(minutes).padStart(2, "0")}:${padded}` : `${minutes}:${padded}`;
}
