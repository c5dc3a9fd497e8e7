// How what the page shows follows what there is, at the price of what changed.

export const SIGNS = {
  "online": "●", "ready": "●", "in service": "●",
  "in part": "◐", "warning": "!", "settling": "◌", "waiting": "◌",
  "shifting": "⇄", "draining": "⇢", "removed": "⊘", "offline": "✕", "out": "✕",
  "not ready": "!", "away": "✕",
};

export const byId = (id) => document.getElementById(id);

/** What a template makes, with spots that are named by their classes. Only what differs from what
 * is shown already touches the document. */
export class Part {
  constructor(template) {
    this.element = template.content.firstElementChild.cloneNode(true);
    this.spots = new Map();
    this.shown = new Map();
  }

  spot(name) {
    if (!this.spots.has(name)) {
      this.spots.set(name, this.element.querySelector("." + name));
    }
    return this.spots.get(name);
  }

  differs(what, value) {
    const differs = this.shown.get(what) !== value;
    this.shown.set(what, value);
    return differs;
  }

  text(name, value) {
    if (this.differs(name, value)) {
      this.spot(name).textContent = value;
    }
  }

  state(state, word = state) {
    if (this.differs("state of it", state)) {
      this.element.dataset.state = state;
      this.spot("sign").textContent = SIGNS[state];
    }
    this.text("word", word);
  }

  percent(name, value) {
    if (this.differs("bar " + name, value)) {
      const bar = this.spot(name);
      bar.firstElementChild.style.setProperty("--part", Math.max(0, Math.min(100, value)));
      bar.classList.toggle("full", value >= 80);
    }
  }
}

/** The children of a list, kept in step with items by their keys. */
export class KeyedList {
  constructor(list, template, keyOf, fill, make = (key) => new Part(template)) {
    Object.assign(this, { list, keyOf, fill, make });
    this.parts = new Map();
  }

  show(items) {
    const gone = new Set(this.parts.keys());
    let next = this.list.firstElementChild;
    for (const item of items) {
      const key = this.keyOf(item);
      gone.delete(key);
      if (!this.parts.has(key)) {
        this.parts.set(key, this.make(key));
      }
      const part = this.parts.get(key);
      if (part.element === next) {
        next = next.nextElementSibling;
      } else {
        this.list.insertBefore(part.element, next);
      }
      this.fill(part, item);
    }
    for (const key of gone) {
      this.parts.get(key).element.remove();
      this.parts.delete(key);
    }
  }
}

export function setText(id, text) {
  const element = byId(id);
  if (element.textContent !== String(text)) {
    element.textContent = text;
  }
}

export function setTime(element, seconds) {
  const time = new Date(seconds * 1000);
  element.dateTime = time.toISOString();
  element.textContent = time.toLocaleTimeString([], { hour12: false });
  element.title = time.toLocaleString();
}

export const plural = (count, one) => `${count} ${one}${count === 1 ? "" : "s"}`;
