// What the page knows, and who is told when it changes.

import {api} from './api.js';
import {Feed} from './feed.js';

// Choices that outlive the page. A page from a file may have no storage: they hold until it is closed.
function kept(key) {
  try {
    return localStorage.getItem('console-' + key);
  } catch {
    return null;
  }
}

function keep(key, value) {
  try {
    localStorage.setItem('console-' + key, value);
  } catch {
    // As above.
  }
}

const TOLD_AT_LEAST = 50;  // milliseconds between two drawings of what comes by itself

class Store {
  constructor() {
    this.rows = [];          // by id, ascending
    this.index = new Map();  // id to row
    this.server = null;      // the server's state
    this.status = 'connecting';
    this.lost = 0;           // exchanges that were dropped before they came here
    this.paused = null;      // the rows as they were when the list was paused
    this.clearedTo = 0;      // ids up to here are hidden
    this.capture = null;     // an import or a report in place of the live rows
    this.selected = null;    // the id of the row that is looked at
    this.query = '';
    this.range = null;       // [from, to] of the time that is looked at
    this.masked = kept('mask') === 'on';
    this.marked = null;      // the left side of a comparison
    this.listeners = new Set();
    this.version = 0;
    this.toldAt = 0;
    this.setTheme(kept('theme') ?? (matchMedia('(prefers-color-scheme: dark)').matches ? 'dark' : 'light'));
  }

  subscribe(listener) {
    this.listeners.add(listener);
    return () => this.listeners.delete(listener);
  }

  // Many changes of one moment are told once.
  changed(isPressing) {
    this.version += 1;
    if (this.due) return;
    const wait = isPressing ? 0 : this.toldAt + TOLD_AT_LEAST - performance.now();
    this.due = setTimeout(() => {
      this.due = null;
      this.toldAt = performance.now();
      for (const listener of [...this.listeners]) listener();
    }, wait);
  }

  // What the reader did is shown at once.
  set(values) {
    Object.assign(this, values);
    clearTimeout(this.due);
    this.due = null;
    this.changed(true);
  }

  connect() {
    this.feed?.stop();
    this.feed = new Feed(this, this.masked).start();
  }

  takeState(server) {
    this.server = server;
    this.changed();
  }

  takeStatus(status) {
    this.status = status;
    this.changed();
  }

  takeBatch({rows, oldest, gap, first}) {
    if (first) this.forget();
    if (gap) this.lost += Math.max(0, oldest - 1 - (this.rows.at(-1)?.id ?? oldest));
    for (const row of rows) this.put(row);
    const gone = this.placeOf(oldest);
    for (const row of this.rows.splice(0, gone)) this.index.delete(row.id);
    this.changed();
  }

  forget() {
    this.rows = [];
    this.index.clear();
    this.clearedTo = 0;
    this.lost = 0;
  }

  put(row) {
    const isKnown = this.index.has(row.id);
    this.index.set(row.id, row);
    if (!isKnown && !(this.rows.at(-1)?.id > row.id)) this.rows.push(row);
    else this.rows.splice(this.placeOf(row.id), isKnown ? 1 : 0, row);
  }

  // Where the id stands, or would stand.
  placeOf(id) {
    let low = 0;
    let high = this.rows.length;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (this.rows[middle].id < id) low = middle + 1;
      else high = middle;
    }
    return low;
  }

  // The rows that views are about: those of the capture if one is open, else the live ones.
  get shown() {
    if (this.capture) return this.capture.rows;
    const rows = this.paused ?? this.rows;
    return this.clearedTo > 0 ? rows.filter((row) => row.id > this.clearedTo) : rows;
  }

  find(id) {
    return (this.capture ?? this).index.get(id);
  }

  get isLive() {
    return !this.capture;
  }

  // The bytes of "request" or "reply".
  async body(id, part) {
    if (!this.capture) return api.body(id, part, this.masked);
    const entry = this.capture.entries.get(id);
    const binary = entry?.[part + 'Bytes'];
    if (binary === undefined) return new TextEncoder().encode(entry?.[part] ?? '');
    return Uint8Array.from(atob(binary.replaceAll('-', '+').replaceAll('_', '/')), (c) => c.charCodeAt(0));
  }

  async search(text) {
    if (!this.capture) return api.search(text);
    return [...this.capture.entries.values()].filter(({request, reply}) => `${request}\n${reply}`.includes(text)).map(({row}) => row.id);
  }

  // `entries` are [{row, request, reply, requestBytes, replyBytes}], `notes` what is to be said of them.
  openCapture({name, entries, notes}) {
    const rows = entries.map((entry) => entry.row);
    const byId = (values) => new Map(values.map((value, at) => [rows[at].id, value]));
    this.set({capture: {name, notes, rows, index: byId(rows), entries: byId(entries)}, selected: null, range: null, query: ''});
  }

  setMasked(masked) {
    keep('mask', masked ? 'on' : 'off');
    this.forget();
    this.set({masked, paused: null});
    this.connect();
  }

  setTheme(theme) {
    keep('theme', theme);
    document.documentElement.dataset.theme = theme;
    this.set({theme});
  }

  pause(on) {
    this.set({paused: on ? [...this.rows] : null});
  }
}

export const store = new Store();
